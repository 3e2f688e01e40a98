#pragma once

#include <ostream>

#include "Pedido.h"
#include "aliases/ArquivoIni.h"
#include "process/Programa.h"

namespace wkd {

/// Runs a command of PacoteWKD: results to `saida`, errors to `erros`.
TCodigoDeSaida ExecutaPedido(const TPedidoDoPacote& pedido, const TLocaisDoIni& locais, std::ostream& saida,
                             std::ostream& erros);

}  // namespace wkd
