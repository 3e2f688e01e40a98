#pragma once

#include <string>

namespace wkd {

/// One line of standard input; on a terminal after a prompt and without echo. Empty at end of input.
std::string PedeSenha();

}  // namespace wkd
