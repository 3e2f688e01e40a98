#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace wkd {

/// Character sets that this program can write and read on its own. What else a column may have, the server turns
/// into the connection's set.
enum class TConjunto { Utf8, Win1252, Iso8859_1, Ascii, Octetos };

/// Set of a server's number (RDB$CHARACTER_SETS). NONE is Windows-1252. Throws TErroConversao for any other.
TConjunto ConjuntoDoNumero(int numero);
/// Set of a connection's name, such as "WIN1252"; nothing for one not known here.
std::optional<TConjunto> ConjuntoDoNome(std::string_view nome);
/// Most bytes of a character in the set of that number.
int BytesPorCaractere(int numero);

/// Text of the set as UTF-8.
std::string ParaUtf8(TConjunto conjunto, std::string_view bytes);
/// UTF-8 as bytes of the set. Throws TErroConversao for a character without a place there.
std::string DeUtf8(TConjunto conjunto, std::string_view utf8);

}  // namespace wkd
