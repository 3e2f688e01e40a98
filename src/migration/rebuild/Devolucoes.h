#pragma once

#include <string>
#include <vector>

#include "context/Contexto.h"

namespace wkd {

/// Statements that give a rebuilt table again what went with the old one. They are kept with the backup table, from
/// before the drop to the end of the rebuild. Throws TErroBanco, and TErroConversao for letters that the connection
/// cannot hold.
void GuardaDevolucoes(TContexto& ctx, const std::string& backup, const std::vector<std::string>& comandos);
std::vector<std::string> DevolucoesGuardadas(TContexto& ctx, const std::string& backup);

}  // namespace wkd
