#pragma once

#include <string>
#include <string_view>

#include "connection/Connection.h"

namespace wkd {

/// Statement that commits, or rolls back, on that kind of server; empty where nothing is issued.
std::string_view ComandoCommit(TTipoBanco banco);
std::string_view ComandoRollback(TTipoBanco banco);

/// " TOP " becomes " FIRST " on Firebird and the other way round on SQL Server, blanks part of the patterns.
std::string AjustaQuery(std::string_view comando, TTipoBanco banco);

/// Piece between "alter table " + table and the column definition.
std::string ChaveAlteraColuna(std::string_view coluna, TTipoBanco banco);

/// On SQL Server every "BLOB" becomes "IMAGE" and every "TIMESTAMP" "datetime".
std::string AjustaCriaTabela(std::string_view comando, TTipoBanco banco);

/// Whether the table list of an Oracle user shows the table: its name begins with "B", "C", "S" or "T".
bool TabelaListadaNoOracle(std::string_view tabela);

}  // namespace wkd
