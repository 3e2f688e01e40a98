#pragma once

#include <set>
#include <string>
#include <vector>

#include "Contexto.h"

namespace wkd {

// What only the backup of a table has, and what is about to go with it, is kept in the rejects file, and brought down
// to the disk: with the key of each row, or with the whole row when the backup has no column of the key. Both throw
// std::runtime_error when it could not be kept.

/// Values in columns that the table lacks, before the backup is dropped. A line tells of the columns.
void GuardaSobra(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chave);
/// Rows whose key stands in the table with other values, in other columns than `alteradas` (in capitals): somebody has
/// changed the row since it came back, or has taken its key before.
void GuardaDiferentes(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chave,
                      const std::set<std::string>& alteradas);

}  // namespace wkd
