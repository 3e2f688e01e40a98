#pragma once

#include <functional>
#include <string>

#include "Contexto.h"

namespace wkd {

/// In the current folder table + ".ok" becomes table + ".old", and table + ".atu" becomes table + ".ok". What fails
/// stops nothing.
void MoveMarcadores(TContexto& ctx, const std::string& tabela);

/// Changes the stored row of the current table and takes the rebuild's mark away, in one transaction. False, and a
/// line of Memo2, when that could not be committed.
bool GravaFim(TContexto& ctx, const std::string& tabela, const std::function<void(TClientDataSet&)>& preenche);

/// Records the package's version and description of the current table in its stored row, which ends the rebuild.
/// False when that was not to be done or could not be committed.
bool EncerraReconstrucao(TContexto& ctx, const std::string& tabela);

}  // namespace wkd
