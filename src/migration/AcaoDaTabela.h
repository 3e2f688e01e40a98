#pragma once

#include <string_view>

namespace wkd {

/// What a run does with a table.
enum class TAcaoDaTabela { Nada, Cria, Altera, Reconstroi };

constexpr std::string_view NomeDaAcao(TAcaoDaTabela acao) {
    constexpr std::string_view kNomes[] = {"nada", "criar", "alterar", "reconstruir"};
    return kNomes[static_cast<int>(acao)];
}

}  // namespace wkd
