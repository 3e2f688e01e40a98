#pragma once

#include "Contexto.h"

namespace wkd {

/// Deletes the SATRIB rows whose table is not in SARQUIVO.
void ApagaAtributosOrfaos(TContexto& ctx);
/// Deletes the SLOOKUP rows whose table is not in SARQUIVO.
void AtualizaLookup(TContexto& ctx);

}  // namespace wkd
