#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace wkd {

using TCampos = std::vector<std::pair<std::string_view, std::string>>;

/// A part of recursos/relatorio.html with its {{name}} replaced by texts, which are escaped, and its {{{name}}} by
/// other parts, which are not. One pass: what is put in is not looked at again.
std::string Preenche(std::string_view nome, const TCampos& campos);

}  // namespace wkd
