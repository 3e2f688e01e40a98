#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "screen/Tela.h"

namespace wkd {

// Lines for whoever started the program in a terminal or a job, UTF-8, written by a thread of their own: nobody who
// does not read them holds a run. A stream that nobody reads any more ends nothing; what is too much for the buffer is
// left out, and a line says how many are.

void EscreveNaSaida(std::string_view linha);
void EscreveNosErros(std::string_view linha);
/// Text for the terminal at standard output, as it is.
void EscreveNoTerminal(std::string_view texto);

/// Waits until all is written, as long as somebody reads.
void EsperaSaidas();

/// What an unattended run tells of its errors. Whatever counts as one has its line: those of the error list as they
/// stand, and those of the log that no line has told. During a run a second line follows with what the first leaves
/// out: table and step, and the next thing to do; once for errors in a row that have them in common.
class TEcoDosErros {
  public:
    using TEscreve = std::function<void(std::string_view)>;
    explicit TEcoDosErros(TEscreve escreve) : escreve_(std::move(escreve)) {}

    /// `onde`: what is under way, for an error that nobody gives a table or step; empty outside a run.
    void Erro(const TErroDaExecucao& erro, std::string_view onde);
    /// What is still to be told about the errors before; to be called before other lines.
    void Conclui();

  private:
    TEscreve escreve_;
    std::string pendente_;  // the second line
};

}  // namespace wkd
