#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "context/Contexto.h"
#include "tables/DefinicaoCampo.h"

namespace wkd {

// The table is named as the package writes it: its rows in the customer's dictionary are looked up by that.

/// The table's columns as the dictionary will have them, those of the customer among them.
std::vector<TColunaDicionario> ColunasNovas(TContexto& ctx, const std::string& nome);

/// Why a table must not be rebuilt: the package's columns of it cannot make a table, its backup table would have the
/// name of a business table or of somebody's own, or the rebuild itself lives on it. Expects SatribNovo on the table.
std::optional<TErro> ImpedimentoDaReconstrucao(TContexto& ctx, const std::string& nome);

/// Rebuilds one business table from the package's dictionary with all its rows.
void Nova(TContexto& ctx, std::string_view tabela);

}  // namespace wkd
