#pragma once

#include <string>
#include <vector>

#include "Connection.h"
#include "Montagem.h"

namespace wkd {

/// Puts the dictionary of a database into a package: SARQUIVO, SATRIB and, where they exist, its other tables, without
/// the customer's additions ("U_"); then all rows of `tabelas`. Rows come in the order of their keys, so that equal
/// dictionaries make equal packets. Throws TErroBanco, TErroPacote.
void ExportaDicionario(TConnection& conexao, const std::vector<std::string>& tabelas, TMontagem& montagem);

}  // namespace wkd
