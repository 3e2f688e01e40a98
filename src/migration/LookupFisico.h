#pragma once

#include "Contexto.h"

namespace wkd {

/// Once per database: fills every lookup column from its lookup table.
void AtualizaLookupFisico(TContexto& ctx);

}  // namespace wkd
