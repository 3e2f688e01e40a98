#pragma once

#include <memory>

#include "Connection.h"
#include "ParametrosConexao.h"

namespace wkd {

/// Connection to a SQL Server through an ODBC driver. Parameters read: those of CadeiaDeConexao() and "ConnectTimeout"
/// in seconds. Reading outside transactions goes over further connections to the same database, so that rows are read
/// while statements run whether the driver has multiple result sets or not.
std::unique_ptr<TConnection> CriaConexaoOdbc(const TParametrosConexao& parametros);

}  // namespace wkd
