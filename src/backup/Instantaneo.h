#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "ServidorDeBackup.h"
#include "connection/Connection.h"

namespace wkd {

/// What is compared of a table: every column, key and index in words, and all rows in one number that does not depend
/// on their order.
struct TTabelaNoInstantaneo {
    std::vector<std::string> estrutura;
    std::int64_t registros = 0;
    std::string hash;

    bool operator==(const TTabelaNoInstantaneo&) const = default;
};

/// A database at one moment, by table name.
using TInstantaneo = std::map<std::string, TTabelaNoInstantaneo>;

inline constexpr std::string_view kMetodoDoInstantaneo =
    "soma, em qualquer ordem dos registros, de FNV-1a 64 dos valores de cada registro";

/// Reads the whole database once, row by row, in the connection's open transaction. Throws TErroBanco.
TInstantaneo TiraInstantaneo(TConnection& conexao, const TAcompanha& acompanha);

}  // namespace wkd
