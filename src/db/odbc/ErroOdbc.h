#pragma once

#include <sql.h>
#include <sqlext.h>

#include <string>
#include <string_view>

#include "Erros.h"

namespace wkd {

/// The error that a handle's diagnostics tell, the texts of all its records joined. `comando` is the statement; empty
/// while a connection is being opened.
TErroBanco ErroOdbc(SQLSMALLINT tipo, SQLHANDLE handle, std::string_view comando);

/// Throws the error of a call unless it went well. "No data" is how drivers report a success without rows, such as DDL.
inline void ConfereOdbc(SQLRETURN retorno, SQLSMALLINT tipo, SQLHANDLE handle, std::string_view comando) {
    if (!SQL_SUCCEEDED(retorno) && retorno != SQL_NO_DATA) throw ErroOdbc(tipo, handle, comando);
}

}  // namespace wkd
