#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>

#include "connection/Connection.h"
#include "datamodule/DataModulo.h"

namespace wkd {

/// Settings table inside the business database, one row per section and key. A null connection reads nothing and
/// writes nothing.
std::string LeParametro(std::string_view secao, std::string_view chave, std::string_view padrao, TConnection* conexao);
void GravaParametro(std::string_view secao, std::string_view chave, std::string_view valor, TConnection* conexao);

// Indexes that a release takes out of SINDSEC: nobody would know afterwards that they were the dictionary's. Those that
// the database has are kept in TINI, in this section (key: the index, value: its table), until the step of their table
// drops them.
inline constexpr std::string_view kSecaoDosRetirados = "IndiceRetirado";

/// Index names by table, all in capitals.
using TIndicesRetirados = std::map<std::string, std::set<std::string>>;

/// The indexes of the stored SINDSEC that are not among the rows that will take its place. Nothing without TINI.
TIndicesRetirados RetiradosPor(TDataModulo& dm, const TTabelaEmMemoria& nova);
/// In the open transaction.
void GravaRetirados(TConnection& conexao, const TIndicesRetirados& retirados);
void ApagaRetirados(TConnection& conexao, const std::set<std::string>& nomes);

/// SARQUIVO.VERSAO of a table whose rows wait in a complete backup table.
inline constexpr std::int64_t kVersaoPendente = -1;
/// Whether the table carries it, whatever its module. The answer is that of the database.
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
