#pragma once

#include <string>
#include <vector>

namespace wkd {

/// The table names among the lines of a list: blank ones are none.
std::vector<std::string> NomesListados(const std::vector<std::string>& linhas);

/// Filter of SArquivoNovo that shows the listed tables only; empty for an empty list.
std::string FiltroDeTabelas(const std::vector<std::string>& tabelas);

}  // namespace wkd
