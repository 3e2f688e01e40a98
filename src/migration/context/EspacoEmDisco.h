#pragma once

#include "context/Contexto.h"

namespace wkd {

/// Throws std::runtime_error when the disk of the database is about to be full. Firebird 3.0 can damage a database
/// that it cannot make larger, so nothing is begun, and a copy ends, before that happens.
void ExigeEspacoEmDisco(TContexto& ctx);

}  // namespace wkd
