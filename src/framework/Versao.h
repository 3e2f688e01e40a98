#pragma once

#include <string_view>

namespace wkd {

inline constexpr std::string_view kVersao = "7.17";

}  // namespace wkd
