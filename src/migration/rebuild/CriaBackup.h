#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "context/Contexto.h"

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

/// The key columns by which the rows of a table are told apart: those of the stored dictionary, else of the physical
/// primary key.
std::vector<std::string> ChaveGuardada(TContexto& ctx, const std::string& tabela);

struct TBackupFeito {
    std::int64_t registros = 0;              // that the table is to have in the end
    std::vector<std::string> chaveDaTabela;  // primary key of the table that was copied; empty for an earlier copy
};

/// Saves the rows of a table, its name in capitals, into "B" + table and gives it VERSAO -1. The backup of an
/// interrupted rebuild serves as it is, unless the old table is known to be whole or `sempre` asks for a new one; a
/// table that has rows must be known to hold the backup's (`conferida`).
/// Expects SarquivoVelho and SatribNovo on the table. Throws std::runtime_error and what it derives: the table must not
/// be dropped then.
TBackupFeito CriaBackup(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chave, bool sempre,
                        bool conferida);

}  // namespace wkd
