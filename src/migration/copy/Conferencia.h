#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "connection/Connection.h"

namespace wkd {

/// What the comparison of a table with its backup table found.
struct TConferencia {
    std::int64_t naBackup = 0, naTabela = 0;  // rows
    std::int64_t diferentes = 0;              // rows of the backup without an equal one in the table
    std::vector<std::string> colunas;         // that differ; only where no key pairs the rows
    bool emParte = false;                     // some columns were left out, or compared by where they have a value

    bool Igual() const { return naBackup == naTabela && diferentes == 0 && colunas.empty(); }
};

/// Compares both tables by value over their common columns, blobs by their bytes. The server does it, types made equal
/// first; what it cannot compare is read, in pieces. Rows are paired by the table's primary key where the backup has
/// its columns; otherwise each column is compared by counts and check sums. `ignoradas` (in capitals) were changed on
/// purpose by the copy. Throws TErroBanco.
TConferencia ConfereComBackup(TConnection& conexao, const std::string& backup, const std::string& tabela,
                              const std::set<std::string>& ignoradas);

/// Queries that give, with all its columns, each row of the backup table that stands in the table under its key with
/// other values; a row may come more than once when there are hundreds of columns. None when no key pairs the rows.
std::vector<std::string> ConsultasDasDiferentes(TConnection& conexao, const std::string& backup,
                                                const std::string& tabela, const std::set<std::string>& ignoradas);

}  // namespace wkd
