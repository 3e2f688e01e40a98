#pragma once

#include "Contexto.h"

namespace wkd {

/// Writes each column's dictionary default into the rows where the column is NULL. A failing update is passed over.
void AtualizaValorPadrao(TContexto& ctx);

}  // namespace wkd
