#pragma once

#include <string>
#include <string_view>

#include "Plano.h"

namespace wkd {

std::string_view NomeDaAcao(TAcaoDaTabela acao);  // "criar", "alterar", "reconstruir", "nada"

/// The plan for people, and for programs (one JSON object).
std::string PlanoEmTexto(const TPlano& plano);
std::string PlanoEmJson(const TPlano& plano);

}  // namespace wkd
