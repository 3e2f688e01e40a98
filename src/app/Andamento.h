#pragma once

#include <string>
#include <string_view>

namespace wkd {

/// Where a run stands, as its bars and labels have it.
struct TAndamento {
    int tabelasFeitas = 0, tabelas = 0;
    std::string_view geral, atual;      // labels; "Parado." while nothing is under way
    std::string_view estimativa;        // of the current step
    std::string_view semResposta = {};  // how long the server has been silent; empty while it answers
};

/// "Tabela 3 de 12 | 5.000 de 27.000 (18%), faltam 00:00:02, 8.211/s", as far as it is known.
std::string TextoDoAndamento(const TAndamento& andamento);
/// One line of it with what is done, what matters most in front: "Tabela 3 de 12 | 5.000 de 27.000 (18%), ... |
/// Restaurando ...".
std::string LinhaDeAndamento(const TAndamento& andamento);

}  // namespace wkd
