#pragma once

#include <vector>

#include "Comparacao.h"
#include "Contexto.h"

namespace wkd {

/// Statements that wait to be executed on the table under analysis, in order.
using TPendentes = std::vector<TComandoPendente>;

/// Runs one waiting statement of the table in a transaction of its own, its alternative when the server refuses the
/// syntax or the types; what was cached of the table's columns is forgotten. Returns the error of the last one tried.
TResultado ExecutaPendente(TContexto& ctx, std::string_view tabela, const TComandoPendente& comando);

}  // namespace wkd
