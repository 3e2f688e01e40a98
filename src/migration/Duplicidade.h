#pragma once

#include "Contexto.h"

namespace wkd {

/// Removes the SARQUIVO rows whose module and table occur more than once, the first one included: they come back from
/// the package.
void VerificaDuplicidadeSarquivo(TContexto& ctx);

}  // namespace wkd
