#pragma once

#include <cstdint>
#include <vector>

#include "context/Contexto.h"
#include "plan/Plano.h"

namespace wkd {

// What the change of a table meets beside its rows, as findings of its plan.

/// Indexes that pages of this size do not hold. A column that is there keeps its character set, but in a new table.
void ExaminaChaves(TContexto& ctx, TPlanoDaTabela& tabela, const std::vector<TColunaDicionario>& novas);
/// A column that no dictionary tells of goes with the table, but for its values.
void ForaDosDicionarios(TContexto& ctx, TPlanoDaTabela& tabela);
/// Of `formatos` versions that the database keeps of the table by now, those that are left for its alterations.
void ExaminaFormatos(TPlanoDaTabela& tabela, std::int64_t formatos);
/// What keeps a table from being rebuilt, and what stands on it that does not come back.
void ExaminaDependencias(TContexto& ctx, TPlanoDaTabela& tabela);

}  // namespace wkd
