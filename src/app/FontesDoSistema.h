#pragma once

#include <thread>

namespace wkd {

/// Reads the system's list of fonts, which costs a good part of the time up to the first window, while the screen is
/// being connected. The locale must not change before the thread ends.
std::jthread LeFontesDoSistema();

}  // namespace wkd
