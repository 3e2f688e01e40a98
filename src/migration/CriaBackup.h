#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Contexto.h"

namespace wkd {

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
