#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

#include "commands/Eco.h"
#include "screen/Tela.h"

namespace wkd {

/// The first `colunas` characters of a UTF-8 text; a cut one ends in "…".
std::string Corta(std::string_view texto, std::size_t colunas);

/// Last line of the terminal at standard output, rewritten in place. When standard output is no terminal nothing is
/// ever written. Erase it before other lines are written.
class TLinhaDoTerminal {
  public:
    TLinhaDoTerminal();
    ~TLinhaDoTerminal() { Apaga(); }
    TLinhaDoTerminal(const TLinhaDoTerminal&) = delete;
    TLinhaDoTerminal& operator=(const TLinhaDoTerminal&) = delete;

    bool Existe() const { return existe_; }
    void Mostra(std::string_view texto);
    void Apaga();

  private:
    bool existe_;
    std::string mostrada_;
};

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

/// Screen of a command that only reads: what fails goes to standard error, everything else nowhere.
class TTelaDoConsole : public TTelaSilenciosa {
  public:
    void Informacao(std::string_view texto) override { EscreveNosErros(texto); }
    void SemResposta(std::string_view texto) override {
        const auto agora = std::chrono::steady_clock::now();
        if (texto.empty() || agora < proxima_) return;
        proxima_ = agora + std::chrono::seconds(30);
        EscreveNosErros(texto);
    }

  protected:
    void Memo2(std::string_view linha) override { EscreveNosErros(linha); }

  private:
    std::chrono::steady_clock::time_point proxima_{};
};

}  // namespace wkd
