#pragma once

#include "packet/DataPacket.h"

namespace wkd {

/// Brings contents that stay in the file to memory, where they are compared later; a damaged one throws TErroPacote.
void LeConteudos(TDataPacket& pacote);
/// Throws std::logic_error where a packet that came back differs from the one that was written, but for what packets do
/// not hold: less than a millisecond, and an empty blob in the XML form.
void ExigeIguais(const TDataPacket& lido, const TDataPacket& original);

}  // namespace wkd
