#pragma once

#include "Ambiente.h"
#include "CodigoDeSaida.h"
#include "LinhaDeComando.h"

namespace wkd {

/// The unattended update: opens the alias, runs, writes the log.
TCodigoDeSaida AtualizaDesassistida(const TAmbiente& ambiente, const TPedeAtualizacao& pedido);

}  // namespace wkd
