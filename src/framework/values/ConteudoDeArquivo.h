#pragma once

#include <filesystem>
#include <memory>

#include "values/Valor.h"

namespace wkd {

/// Content of a file, read in pieces when it is needed. Throws std::system_error when it cannot be read.
std::shared_ptr<const TConteudo> ConteudoDeArquivo(const std::filesystem::path& arquivo);

}  // namespace wkd
