#pragma once

#include <nlohmann/json_fwd.hpp>
#include <ostream>

#include "Inventario.h"
#include "Revisao.h"

namespace wkd {

// What a package holds and what is wrong with it, for people or, with `json`, for programs.

void Mostra(const TInventario& pacote, bool json, std::ostream& saida);
/// Any other result as JSON: these fields behind those that every one of these objects begins with.
void ImprimeJson(const nlohmann::ordered_json& campos, std::ostream& saida);
void Mostra(const std::vector<TAchadoDaRevisao>& achados, bool json, std::ostream& saida);

}  // namespace wkd
