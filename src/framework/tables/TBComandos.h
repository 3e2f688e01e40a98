#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "connection/Connection.h"

namespace wkd {

/// "B" + table.
std::string NomeDaBackup(std::string_view tabela);
/// Column of that name, letter case ignored; null when there is none.
const TColunaFisica* ColunaDeNome(const std::vector<TColunaFisica>& colunas, std::string_view nome);

}  // namespace wkd
