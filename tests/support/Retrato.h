#pragma once

#include <string>

#include "connection/Connection.h"

namespace wkd {

/// Tables, columns, keys, indexes and rows of a database, a line each, sorted; the order of rows does not count. The
/// rows of SISTEMA, which hold the time of the update, are left out.
std::string Retrato(TConnection& conexao);

/// Lines that only one of two pictures has, "-" before the expected ones, "+" before the others; empty when equal.
std::string Diferencas(const std::string& esperado, const std::string& obtido);

}  // namespace wkd
