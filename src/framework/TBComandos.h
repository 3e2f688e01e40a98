#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Metadados.h"
#include "TipoBanco.h"

namespace wkd {

/// "B" + table.
std::string NomeDaBackup(std::string_view tabela);
/// Name from the server's catalogue as statements take it: in double quotes only where it needs them.
std::string Identificador(std::string_view nome, TTipoBanco banco);
/// Column of that name, letter case ignored; null when there is none.
const TColunaFisica* ColunaDeNome(const std::vector<TColunaFisica>& colunas, std::string_view nome);

}  // namespace wkd
