#pragma once

#include "commands/LinhaDeComando.h"
#include "process/Programa.h"
#include "window/Preferencias.h"

namespace wkd {

// Commands that read a database and change nothing. Results go to standard output, errors to standard error.

TCodigoDeSaida MostraPlano(const TAmbiente& ambiente, const TPedePlano& pedido);
TCodigoDeSaida MostraDesvios(const TAmbiente& ambiente, const TPedeConfere& pedido);

}  // namespace wkd
