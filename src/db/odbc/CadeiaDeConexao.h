#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "ParametrosConexao.h"

namespace wkd {

/// Connection string of a SQL Server. Parameters read: "Server" ("host", "host,port" or "host\instance"), or
/// "DataSource" (a data source of the ODBC configuration), "Database", "User_Name", "Password", "Encrypt" and
/// "TrustServerCertificate" (in the driver's words), and "Driver"; without it, the first of the known drivers among
/// `instalados`. A "Driver" that is a file stands for itself.
/// Throws TErroConfiguracao when there is no driver.
std::string CadeiaDeConexao(const TParametrosConexao& parametros, const std::vector<std::string>& instalados);

}  // namespace wkd
