#pragma once

#include <ostream>

#include "CodigoDeSaida.h"
#include "LocalizaIni.h"
#include "Pedido.h"

namespace wkd {

/// Runs a command of PacoteWKD: results to `saida`, errors to `erros`.
TCodigoDeSaida ExecutaPedido(const TPedidoDoPacote& pedido, const TLocaisDoIni& locais, std::ostream& saida,
                             std::ostream& erros);

}  // namespace wkd
