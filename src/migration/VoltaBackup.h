#pragma once

#include <set>
#include <string>
#include <vector>

#include "Contexto.h"
#include "Restante.h"

namespace wkd {

/// Appends the rows of "B" + table to the table, its name in capitals: all of them, or what an interrupted restore
/// left. Expects SatribNovo on the table. Without a backup table there is a log entry. Returns the columns, in
/// capitals, whose values are changed on purpose. Throws when the restore cannot go on.
std::set<std::string> VoltaBackup(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chave,
                                  const TRestante& restante);

}  // namespace wkd
