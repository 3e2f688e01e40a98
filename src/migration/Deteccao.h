#pragma once

#include "Contexto.h"

namespace wkd {

/// Whether the update may run while other users are connected: false as soon as one existing column of the visible
/// package tables changes in a way that needs exclusive use. Every such column gets a line of the status list.
/// Leaves both package datasets behind their last rows.
bool VerificaAtualizacao(TContexto& ctx);

}  // namespace wkd
