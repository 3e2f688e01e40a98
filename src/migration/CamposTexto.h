#pragma once

#include "Contexto.h"

namespace wkd {

/// Narrows every text column of 2000 characters or more to 1998, through a temporary column. The dictionary records
/// 1988, so a column is converted once.
void AjustaCamposStringMaior2000(TContexto& ctx);
/// Once per SQL Server database: makes COD_INTERNO of three tables nvarchar(25).
void AtualizaCamposVarCharparaNvarChar(TContexto& ctx);

}  // namespace wkd
