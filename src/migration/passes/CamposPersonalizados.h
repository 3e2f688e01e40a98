#pragma once

#include <string_view>

#include "context/Contexto.h"

namespace wkd {

/// Installs every plug-in's customer columns, lookups and searches again.
void AtualizaCamposPersonalizados(TContexto& ctx);

/// Installs one table of one plug-in. `recria` rebuilds the physical table instead of adding to it.
void InstalaCamposPlugin(TContexto& ctx, std::string_view tabela, bool recria, std::string_view plugin);
/// Installs the searches of one table of one plug-in.
void InstalaPesquisasPlugin(TContexto& ctx, std::string_view tabela, std::string_view plugin);
/// Deletes the customer rows of one table of one plug-in: its searches, its columns, or both.
void ApagaCamposPlugin(TContexto& ctx, std::string_view tabela, std::string_view plugin, bool pesquisas, bool campos);

}  // namespace wkd
