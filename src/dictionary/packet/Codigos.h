#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "packet/FontePacote.h"
#include "values/Valor.h"

namespace wkd {

/// Decodes up to about `limite` characters from the start of an attribute value to the end of `saida`; returns how
/// many it took. White space, also as references, may stand anywhere. Throws TErroTrecho.
std::size_t DeBase64(std::string_view resto, std::string& saida, std::size_t limite);

/// How the bytes of a text or blob stand in a packet.
enum class TCodigo {
    Bruto,         // as they are
    Ansi,          // text of unknown character set: UTF-8 when valid, else Windows-1252
    Cp1252,        // text in Windows-1252
    Utf16,         // text in UTF-16, little-endian
    XmlUtf8,       // attribute value of a UTF-8 file, with references
    XmlConferido,  // the same, of a file that was found to be UTF-8 from end to end
    Xml1252,       // attribute value of a Windows-1252 file, with references
    Base64         // attribute value in Base64; white space anywhere
};

/// Settles Ansi by looking at all bytes; every other code is its own answer.
TCodigo Define(TCodigo codigo, std::string_view bytes);
/// Decodes a piece of about `limite` bytes (at least 1 KB) from the start of `resto` to the end of `saida`; returns
/// how many bytes of `resto` it took. `codigo` is not Ansi. Throws TErroTrecho.
std::size_t DecodificaParte(TCodigo codigo, std::string_view resto, std::string& saida, std::size_t limite);
/// All of it. Text comes out as UTF-8. Throws TErroTrecho.
std::string Decodifica(TCodigo codigo, std::string_view bytes);

/// UTF-8 as UTF-16, little-endian. The text must be valid.
std::string ParaUtf16(std::string_view utf8);
/// Whether an attribute value can be seen to stand for itself, at a glance.
bool Simples(TCodigo codigo, std::string_view bytes);

/// Character of the reference ("&amp;", "&#013;", "&#xA;") at the start of `texto`, a pair of surrogate references
/// taken as one; `tamanho` becomes its length. Throws TErroTrecho when it is none.
char32_t LeReferencia(std::string_view texto, std::size_t& tamanho);
void AcrescentaUtf8(std::string& destino, char32_t caractere);

/// Value of a blob or memo whose bytes stand in `trecho`, a part of the source. Short ones are decoded at once
/// (TErroTrecho), others are left in the file and decoded while they are read. `campo` is the position of its name
/// in the source's names.
TValor ValorDeBlob(const std::shared_ptr<const TFontePacote>& fonte, std::string_view trecho, TCodigo codigo,
                   std::size_t campo, TTipoDado tipo);

}  // namespace wkd
