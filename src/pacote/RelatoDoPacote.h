#pragma once

#include <ostream>

#include "Inventario.h"
#include "Revisao.h"

namespace wkd {

// What a package holds and what is wrong with it, for people or, with `json`, for programs.

void Mostra(const TInventario& pacote, bool json, std::ostream& saida);
void Mostra(const std::vector<TAchadoDaRevisao>& achados, bool json, std::ostream& saida);

}  // namespace wkd
