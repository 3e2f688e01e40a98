#pragma once

#include <string>
#include <vector>

#include "ConfereDicionario.h"

namespace wkd {

/// The differences for people, a line each by table, and for programs (one JSON object).
std::string DesviosEmTexto(const std::string& alias, const std::vector<TDesvio>& desvios);
std::string DesviosEmJson(const std::string& alias, const std::vector<TDesvio>& desvios);

}  // namespace wkd
