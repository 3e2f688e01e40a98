#pragma once

#include <string>

#include "commands/LinhaDeComando.h"
#include "commands/Preferencias.h"
#include "process/Programa.h"

namespace wkd {

/// One line of standard input; on a terminal after a prompt and without echo. Empty at end of input.
std::string PedeSenha();

// The alias commands of the command line. Results go to standard output, errors to standard error.

TCodigoDeSaida ListaAliases(const TAmbiente& ambiente);
/// Asks for the password on the terminal without echo, or reads one line of standard input. Without a settings file
/// one is made in the program's folder.
TCodigoDeSaida NovoAlias(const TAmbiente& ambiente, TPedeNovoAlias pedido);
TCodigoDeSaida RemoveAlias(const TAmbiente& ambiente, const TPedeRemoveAlias& pedido);
TCodigoDeSaida TestaAlias(const TAmbiente& ambiente, const TPedeTestaAlias& pedido);

}  // namespace wkd
