#pragma once

#include "Contexto.h"

namespace wkd {

/// Tests every table of the package for a primary key and creates a missing one; what cannot be created is reported.
void verificaIndicesPrimarios(TContexto& ctx);

}  // namespace wkd
