#pragma once

#include <optional>
#include <string_view>

namespace wkd {

/// Kinds of database server; the order is part of the settings file's meaning.
enum class TTipoBanco { tbInterbase, tbMySQL, tbOracle, tbSQLServer, tbODBC };

/// Text of a kind as the settings file stores it, such as "tbInterbase".
std::string_view TipoBancoToStr(TTipoBanco tipo);

/// Kind of a settings-file text; the comparison is exact. Nothing for an unknown text.
std::optional<TTipoBanco> StrToTipoBanco(std::string_view texto);

}  // namespace wkd
