#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "connection/Connection.h"

namespace wkd {

/// SARQUIVO.VERSAO of a table whose rows wait in a complete backup table.
inline constexpr std::int64_t kVersaoPendente = -1;

/// The program's mark on a backup table of its own. It stands on the table itself, so it goes wherever the rows go, a
/// backup and restore of the database included, and a table that somebody else makes under the name has none.
enum class TMarcaDaBackup {
    Nenhuma,      // somebody else's, or of an earlier generation
    Guardando,    // from its creation on: the table that it saves is whole
    Restaurando,  // from the drop on: its rows wait here, and what is in a table of that name may be a part of them
    Concluida     // the rebuild ended: the table has all it is to have
};

TMarcaDaBackup MarcaDaBackup(TConnection& conexao, const std::string& backup);
/// In the open transaction when there is one.
void MarcaBackup(TConnection& conexao, const std::string& backup, TMarcaDaBackup marca);

/// Names of the backup tables marked Restaurando, in one query.
std::vector<std::string> BackupsQueGuardam(TConnection& conexao);

/// "B" + table.
std::string NomeDaBackup(std::string_view tabela);
/// Column of that name, letter case ignored; null when there is none.
const TColunaFisica* ColunaDeNome(const std::vector<TColunaFisica>& colunas, std::string_view nome);

}  // namespace wkd
