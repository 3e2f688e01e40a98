#pragma once

#include "Ambiente.h"
#include "CodigoDeSaida.h"
#include "LinhaDeComando.h"

namespace wkd {

// Commands that read a database and change nothing. Results go to standard output, errors to standard error.

TCodigoDeSaida MostraPlano(const TAmbiente& ambiente, const TPedePlano& pedido);
TCodigoDeSaida MostraDesvios(const TAmbiente& ambiente, const TPedeConfere& pedido);

}  // namespace wkd
