#pragma once

#include <string>
#include <vector>

#include "Contexto.h"

namespace wkd {

/// Keeps in the rejects file what the table's backup has in columns that the table lacks, with the key of each row, or
/// with the whole row when the backup has no column of the key. False when there is nothing. Throws
/// std::runtime_error when it could not be kept.
bool GuardaSobra(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chave,
                 const std::vector<std::string>& colunas);

}  // namespace wkd
