#pragma once

#include <string_view>

#include "IndicesGuardados.h"
#include "Pendentes.h"

namespace wkd {

/// Changes a living table: replaces its dictionary rows by those of the package, executes the waiting statements
/// (taking each off the list) and makes its primary key and secondary indexes again. A failing statement is shown and
/// logged and the next one follows. A key that is dropped is among `guardados`.
void Alterar(TContexto& ctx, std::string_view tabela, TPendentes& pendentes, TIndicesGuardados& guardados);

}  // namespace wkd
