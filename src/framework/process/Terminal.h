#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace wkd {

/// What stands behind the program's name, in UTF-8.
std::vector<std::string> ArgumentosDoPrograma(int argc, char** argv);

/// To be called first of all. A standard stream that is closed leads nowhere from here on, so that no file opened later
/// gets its number. On Windows a window program takes the console that it was started from, streams led elsewhere
/// stay as they are, and what goes out is UTF-8, byte by byte.
void PreparaSaidas();
/// Gives the console back as it was; it is the other programs', too.
void DevolveConsole() noexcept;

inline constexpr int kEntrada = 0, kSaida = 1, kErros = 2;

/// Whether somebody sits at the standard stream.
bool EhTerminal(int fluxo);
/// Whether that is a terminal at standard output whose last line can be written over.
bool SaidaSeReescreve();
/// Columns of the terminal at standard output.
std::size_t LarguraDoTerminal();
/// Writes to a standard stream, waiting for its reader, and tells how many bytes it took; none when it is closed.
std::size_t GravaNoFluxo(int fluxo, std::string_view texto);

/// A line of the standard input, without its end. Throws TInterrompida for who gives up at the question.
std::string LeLinha();
/// The same from the terminal, which does not show it and is afterwards as it was. The question goes to standard error
/// once nothing is shown any more: what is typed at it is neither shown nor lost.
std::string LeSemEco(std::string_view pergunta);

}  // namespace wkd
