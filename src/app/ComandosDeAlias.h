#pragma once

#include "Ambiente.h"
#include "CodigoDeSaida.h"
#include "LinhaDeComando.h"

namespace wkd {

// The alias commands of the command line. Results go to standard output, errors to standard error.

TCodigoDeSaida ListaAliases(const TAmbiente& ambiente);
/// Asks for the password on the terminal without echo, or reads one line of standard input. Without a settings file
/// one is made in the program's folder.
TCodigoDeSaida NovoAlias(const TAmbiente& ambiente, TPedeNovoAlias pedido);
TCodigoDeSaida RemoveAlias(const TAmbiente& ambiente, const TPedeRemoveAlias& pedido);
TCodigoDeSaida TestaAlias(const TAmbiente& ambiente, const TPedeTestaAlias& pedido);

}  // namespace wkd
