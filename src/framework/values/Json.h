#pragma once

#include <ostream>
#include <string_view>

#include "values/Valor.h"

namespace wkd {

/// Text between double quotes, escaped.
void EscreveJson(std::ostream& saida, std::string_view texto);
/// Numbers and booleans bare, NULL as null, bytes and blobs as {"base64": "..."} read piece by piece, everything else
/// as its text.
void EscreveJson(std::ostream& saida, const TValor& valor);

}  // namespace wkd
