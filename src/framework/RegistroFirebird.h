#pragma once

#include <cstdint>
#include <vector>

#include "Connection.h"
#include "DefinicaoCampo.h"

namespace wkd {

/// Bytes that Firebird gives a row. It refuses a table whose rows need more, but only when the creation is committed.
inline constexpr std::int64_t kBytesDoRegistro = 65'535;

/// Bytes of a row of these columns in the connection's database, whose character set gives the width of a letter.
std::int64_t BytesDoRegistro(TConnection& conexao, const std::vector<TColunaDicionario>& colunas);

}  // namespace wkd
