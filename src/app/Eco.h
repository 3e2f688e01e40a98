#pragma once

#include <string_view>

namespace wkd {

// Lines for whoever started the program in a terminal or a job, UTF-8, one line per call, so that a reader at the
// other end of a pipe sees it at once. A stream that nobody reads any more ends nothing.

void EscreveNaSaida(std::string_view linha);
void EscreveNosErros(std::string_view linha);

}  // namespace wkd
