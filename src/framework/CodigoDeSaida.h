#pragma once

namespace wkd {

/// Exit codes of the programs.
enum class TCodigoDeSaida {
    Sucesso = 0,
    ComErros = 1,      // finished, and an error was reported
    Encerrada = 2,     // ended early: package, refused confirmation, connected users, another run
    SemConexao = 3,    // no settings file, unknown alias or no connection
    UsoIncorreto = 64  // arguments
};

}  // namespace wkd
