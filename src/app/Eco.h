#pragma once

#include <string_view>

namespace wkd {

// Lines for whoever started the program in a terminal or a job, UTF-8, written by a thread of their own: nobody who
// does not read them holds a run. A stream that nobody reads any more ends nothing; what is too much for the buffer is
// left out, and a line says how many are.

void EscreveNaSaida(std::string_view linha);
void EscreveNosErros(std::string_view linha);
/// Text for the terminal at standard output, as it is.
void EscreveNoTerminal(std::string_view texto);

/// Waits until all is written, as long as somebody reads.
void EsperaSaidas();

/// To be called first: gives a stream that the program was started without a place to write to. The next file that is
/// opened, such as a database, would get its number otherwise, and with it the lines.
void AbreSaidasQueFaltam();

}  // namespace wkd
