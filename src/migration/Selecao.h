#pragma once

#include <string>
#include <vector>

namespace wkd {

/// Filter of SArquivoNovo that shows the listed tables only; empty for an empty list.
std::string FiltroDeTabelas(const std::vector<std::string>& tabelas);

}  // namespace wkd
