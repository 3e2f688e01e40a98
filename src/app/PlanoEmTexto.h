#pragma once

#include <string>

#include "Plano.h"

namespace wkd {

/// The plan for people, and for programs (one JSON object).
std::string PlanoEmTexto(const TPlano& plano);
std::string PlanoEmJson(const TPlano& plano);

}  // namespace wkd
