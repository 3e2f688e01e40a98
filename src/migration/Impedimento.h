#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Contexto.h"
#include "DefinicaoCampo.h"

namespace wkd {

/// The table's columns as the dictionary will have them, those of the customer among them.
std::vector<TColunaDicionario> ColunasNovas(TContexto& ctx, const std::string& tabela);

/// Why a table, its name in capitals, must not be rebuilt: the package's columns of it cannot make a table, or its
/// backup table would have the name of a business table. Expects SatribNovo on the table.
std::optional<std::string> ImpedimentoDaReconstrucao(TContexto& ctx, const std::string& tabela);

}  // namespace wkd
