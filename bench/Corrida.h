#pragma once

#include <string_view>

#include "BancoGrande.h"

namespace wkd {

/// Seconds of one run up to the end of its tables, from the status line that begins with `desde` on, or from its start
/// when empty; `comandos` gets the statements sent in that time. Throws what the run reported.
double CorreTabelas(const TBancoGrande& banco, const TOpcoes& opcoes, std::string_view desde, int& comandos);

}  // namespace wkd
