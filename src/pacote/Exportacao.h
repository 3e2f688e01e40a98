#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Montagem.h"
#include "connection/Connection.h"

namespace wkd {

/// Puts the dictionary of a database into a package: SARQUIVO, SATRIB and, where they exist, its other tables, without
/// the customer's additions: what "U_" names, its searches ("_P_U_" behind the table's name) and indexes over its
/// columns; then all rows of `tabelas`. Rows come in the order of their names and keys, so that equal dictionaries make
/// equal packets. Throws TErroBanco, TErroPacote.
void ExportaDicionario(TConnection& conexao, const std::vector<std::string>& tabelas, TMontagem& montagem);

}  // namespace wkd
