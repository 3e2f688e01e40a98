#pragma once

#include <set>
#include <string>
#include <vector>

#include "Contexto.h"

namespace wkd {

/// Appends the rows of "B" + table to the table, its name in capitals. Expects SatribNovo on the table. Without a
/// backup table there is a log entry. Returns the columns, in capitals, whose values were changed on purpose. Throws
/// when the restore cannot go on.
std::set<std::string> VoltaBackup(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chave);

}  // namespace wkd
