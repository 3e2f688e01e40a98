#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace wkd {

std::string ParaBase64(std::string_view bytes);

/// Decodes up to about `limite` characters from the start of an attribute value to the end of `saida`; returns how
/// many it took. White space, also as references, may stand anywhere. Throws TErroTrecho.
std::size_t DeBase64(std::string_view resto, std::string& saida, std::size_t limite);

}  // namespace wkd
