#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "Contexto.h"

namespace wkd {

/// Runs a statement that changes the type of a column, or drops it, in a transaction of its own. SQL Server refuses it
/// while a default constraint or an index stands on the column: these then go first and come back behind it in the same
/// transaction, those of a dropped column not. Without a column the statement runs as it is. `antes` comes before the
/// statement in its transaction, which keeps other writers out of the table.
TResultado ExecutaNaColuna(TContexto& ctx, std::string_view tabela, std::string_view coluna, const std::string& sql,
                           const std::function<void()>& antes = nullptr);

}  // namespace wkd
