#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "aliases/Aliases.h"
#include "connection/Connection.h"

namespace wkd {

/// Connection string of a SQL Server. Parameters read: "Server" ("host", "host,port" or "host\instance"), or
/// "DataSource" (a data source of the ODBC configuration), "Database", "User_Name", "Password", "Encrypt" and
/// "TrustServerCertificate" (in the driver's words), and "Driver"; without it, the first of the known drivers among
/// `instalados`. A "Driver" that is a file stands for itself.
/// Throws TErroConfiguracao when there is no driver.
std::string CadeiaDeConexao(const TParametrosConexao& parametros, const std::vector<std::string>& instalados);

/// Connection to a SQL Server through an ODBC driver. Parameters read: those of CadeiaDeConexao() and "ConnectTimeout"
/// in seconds. Reading outside transactions goes over further connections to the same database, so that rows are read
/// while statements run whether the driver has multiple result sets or not.
std::unique_ptr<TConnection> CriaConexaoOdbc(const TParametrosConexao& parametros);

}  // namespace wkd
