#pragma once

#include <array>
#include <string>
#include <string_view>

namespace wkd {

// Statements that the driver sends to a SQL Server on its own account.

/// For every connection: without limits that a driver's configuration may set (Debian's freetds.conf cuts every long
/// value at 64 KB). A table in use is waited for 10 s.
inline constexpr std::array<std::string_view, 2> kAjustesTSql = {"set textsize 2147483647", "set lock_timeout 10000"};
inline constexpr std::string_view kTransacoesTSql = "select @@trancount";
inline constexpr std::string_view kNumeroTSql = "select @@spid";
/// Whether the server works at something for its connections of those numbers, as far as the user may see it.
std::string TrabalhaTSql(std::string_view numero);
/// Ends the connection of that number if it is of this program, computer and user still.
std::string DerrubaTSql(std::string_view numero);
/// Schema of the user's own tables: name and number.
inline constexpr std::string_view kEsquemaTSql = "select schema_name(), schema_id(schema_name())";

// Asked of the catalogue itself: the procedures behind the driver's functions take many times as long, or answer table
// by table. `esquema` is the schema's number: a function in its place would be called for every row.
std::string TabelasTSql(std::string_view esquema);
/// Of every table that has one: table, name of the key, column.
std::string ChavesTSql(std::string_view esquema);

/// Takes the lock of one update a database, which goes with the connection; below 0 when another one has it.
inline constexpr std::string_view kTravaTSql =
    "declare @r int; exec @r = sp_getapplock @Resource = 'AtualizaWKD', @LockMode = 'Exclusive',"
    " @LockOwner = 'Session', @LockTimeout = 0; select @r as resultado";
/// Who has it says so in the 128 bytes that the server keeps for each connection, ...
std::string AnuncioTSql(std::string_view texto);
inline constexpr std::string_view kMarcaDoAnuncio = "AtualizaWKD ";
/// ... and shows, with login and number of the connection, to whoever may see the server's state.
std::string QuemTravaTSql();

std::string MarcaPontoTSql(std::string_view nome);
std::string VoltaAoPontoTSql(std::string_view nome);
/// A shared lock on the whole table, until the transaction ends.
std::string ReservaTSql(std::string_view tabela);
/// Table, column and text of the defaults, and of the computed columns, of one table; of all with an empty name.
std::string PadroesTSql(std::string_view tabela);
std::string ComputadasTSql(std::string_view tabela);
/// Names of the table's unique constraints.
std::string RestricoesTSql(std::string_view tabela);

}  // namespace wkd
