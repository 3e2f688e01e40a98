#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

#include "Codigos.h"
#include "FontePacote.h"
#include "Valor.h"

namespace wkd {

/// Value of a blob or memo whose bytes stand in `trecho`, a part of the source. Short ones are decoded at once
/// (TErroTrecho), others are left in the file and decoded while they are read. `campo` is the position of its name
/// in the source's names.
TValor ValorDeBlob(const std::shared_ptr<const TFontePacote>& fonte, std::string_view trecho, TCodigo codigo,
                   std::size_t campo, TTipoDado tipo);

}  // namespace wkd
