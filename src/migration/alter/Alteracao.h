#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "alter/IndicesGuardados.h"
#include "context/Contexto.h"
#include "decision/Comparacao.h"

namespace wkd {

/// Statements that wait to be executed on the table under analysis, in order.
using TPendentes = std::vector<TComandoPendente>;

/// Runs one waiting statement of the table in a transaction of its own, its alternative when the server refuses the
/// syntax or the types; what was cached of the table's columns is forgotten. Returns the error of the last one tried.
TResultado ExecutaPendente(TContexto& ctx, std::string_view tabela, const TComandoPendente& comando);

/// Runs a statement that changes the type of a column, or drops it, in a transaction of its own. SQL Server refuses it
/// while a default constraint or an index stands on the column: these then go first and come back behind it in the same
/// transaction, those of a dropped column not. Without a column the statement runs as it is. `antes` comes before the
/// statement in its transaction, which keeps other writers out of the table.
TResultado ExecutaNaColuna(TContexto& ctx, std::string_view tabela, std::string_view coluna, const std::string& sql,
                           const std::function<void()>& antes = nullptr);

/// Changes a living table: replaces its dictionary rows by those of the package, executes the waiting statements
/// (taking each off the list) and makes its primary key and secondary indexes again. A failing statement is shown and
/// logged and the next one follows. A key that is dropped is among `guardados`.
void Alterar(TContexto& ctx, std::string_view tabela, TPendentes& pendentes, TIndicesGuardados& guardados);

}  // namespace wkd
