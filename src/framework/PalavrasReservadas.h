#pragma once

#include <string_view>

namespace wkd {

/// Whether Firebird takes the name, in capitals, for a word of its language unless it stands in quotes. The words are
/// those of 3.0 and 4.0.
bool PalavraReservada(std::string_view nome);

}  // namespace wkd
