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
/// Schema of the user's own tables.
inline constexpr std::string_view kEsquemaTSql = "select schema_name()";

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
