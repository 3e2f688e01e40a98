#pragma once

#include <string>
#include <vector>

#include "Contexto.h"

namespace wkd {

/// A column whose change needs exclusive use of the database.
struct TMudancaExclusiva {
    std::string tabela;
    std::string linha;  // as the status list shows it
};
/// Those of the visible package tables. Leaves both package datasets behind their last rows.
std::vector<TMudancaExclusiva> MudancasExclusivas(TContexto& ctx);

/// Whether the update may run while other users are connected: false as soon as one existing column of the visible
/// package tables changes in a way that needs exclusive use. Every such column gets a line of the status list.
bool VerificaAtualizacao(TContexto& ctx);

}  // namespace wkd
