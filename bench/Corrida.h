#pragma once

#include <string_view>

#include "BancoGrande.h"
#include "Medida.h"

namespace wkd {

/// Time of one run, which ends behind its tables, from the status line that begins with `desde` on, or from its start
/// when empty; `comandos` gets the statements sent in that time. Throws what the run reported.
TTempo CorreTabelas(const TAliases& aliases, const TOpcoes& opcoes, std::string_view desde, int& comandos);

}  // namespace wkd
