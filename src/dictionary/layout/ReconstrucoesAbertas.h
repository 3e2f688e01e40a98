#pragma once

#include <set>
#include <string>
#include <string_view>

#include "datamodule/DataModulo.h"
#include "tables/MarcaDaBackup.h"

namespace wkd {

/// Whether the table carries kVersaoPendente, whatever its module. The answer is that of the database.
bool ReconstrucaoPendente(TConnection& conexao, std::string_view tabela);
/// Section of TINI with a mark for each open rebuild, by table in capitals.
inline constexpr std::string_view kSecaoDaReconstrucao = "ReconstroiTabela";

/// Tables in capitals whose rebuild was begun and has not ended: SARQUIVO carries VERSAO -1, TINI a mark, or the backup
/// table says that their rows wait in it. Whichever is there is enough: the others may go with a row or a reload.
using TReconstrucoesAbertas = std::set<std::string>;
TReconstrucoesAbertas ReconstrucoesAbertas(TDataModulo& dm);

/// Whether the rows of an open rebuild are, or may be, in this table: as its table or as its backup. Nothing may drop
/// or empty it.
bool GuardaAberta(const TReconstrucoesAbertas& abertas, std::string_view tabela);

}  // namespace wkd
