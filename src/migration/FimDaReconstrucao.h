#pragma once

#include <string>

#include "Contexto.h"

namespace wkd {

/// In the current folder table + ".ok" becomes table + ".old", and table + ".atu" becomes table + ".ok". What fails
/// stops nothing.
void MoveMarcadores(TContexto& ctx, const std::string& tabela);

/// Records the package's version and description of the current table in its stored row and takes the rebuild's mark
/// away, in one transaction. False when that was not to be done or could not be committed.
bool EncerraReconstrucao(TContexto& ctx, const std::string& tabela);

}  // namespace wkd
