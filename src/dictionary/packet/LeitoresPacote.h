#pragma once

#include <memory>

#include "packet/DataPacket.h"
#include "packet/FontePacote.h"

namespace wkd {

/// Readers of the two forms. They leave the field names in the source and throw TErroPacote.
TDataPacket LeBinario(const std::shared_ptr<TFontePacote>& fonte, TLinhasDoPacote linhas);
TDataPacket LeXml(const std::shared_ptr<TFontePacote>& fonte, TLinhasDoPacote linhas);

}  // namespace wkd
