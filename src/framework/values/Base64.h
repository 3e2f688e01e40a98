#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "values/Valor.h"

namespace wkd {

inline constexpr std::string_view kSinaisDoBase64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// RFC 4648, padded, in one line.
std::string ParaBase64(std::string_view bytes);
/// The same of a blob of any size: `recebe` gets the text in pieces of some kilobytes, in order. Throws what reading
/// the blob throws.
void ParaBase64(const TConteudo& conteudo, const std::function<void(std::string_view)>& recebe);

}  // namespace wkd
