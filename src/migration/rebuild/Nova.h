#pragma once

#include <string_view>

#include "context/Contexto.h"

namespace wkd {

/// Rebuilds one business table from the package's dictionary with all its rows.
void Nova(TContexto& ctx, std::string_view tabela);

}  // namespace wkd
