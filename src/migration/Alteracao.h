#pragma once

#include <string_view>

#include "Pendentes.h"

namespace wkd {

/// Changes a living table: replaces its dictionary rows by those of the package, executes the waiting statements
/// (taking each off the list) and makes its primary key and secondary indexes again. A failing statement is shown and
/// logged and the next one follows.
void Alterar(TContexto& ctx, std::string_view tabela, TPendentes& pendentes);

}  // namespace wkd
