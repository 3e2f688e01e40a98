#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace wkd {

/// Those statements of a SQL Server that a grammar of its language does not take; nothing where none is installed.
std::optional<std::set<std::string>> RecusadosPelaGramatica(const std::vector<std::string>& comandos);

}  // namespace wkd
