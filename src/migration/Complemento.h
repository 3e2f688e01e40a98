#pragma once

#include <string>
#include <vector>

#include "Contexto.h"

namespace wkd {

/// Adds to the backup table the rows of the table whose key it lacks: what was entered since an interrupted rebuild.
/// `chave` must be columns of both tables. Throws TErroBanco.
void CompletaBackup(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chave);

}  // namespace wkd
