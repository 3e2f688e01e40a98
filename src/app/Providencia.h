#pragma once

#include <string_view>

namespace wkd {

/// The next thing to do about an error, by its text; never empty.
std::string_view Providencia(std::string_view mensagem);

}  // namespace wkd
