#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace wkd {

/// a to z turned to capitals; every other character as it is.
std::string Maiusculas(std::string_view texto);
/// A to Z turned to small letters; every other character as it is.
std::string Minusculas(std::string_view texto);
/// Without blanks and control characters (all bytes up to 0x20) at both ends.
std::string_view Apara(std::string_view texto);
/// Without trailing blanks.
std::string_view AparaFim(std::string_view texto);
/// Equal when the letters a to z count as their capitals.
bool IgualSemCaixa(std::string_view a, std::string_view b);
/// Text as dictionary names are looked up: capitals, no trailing blanks.
std::string ChaveDeNome(std::string_view nome);
/// Whether a name of a package or of the dictionary may be pasted into a statement: letters a to z, digits, "_" and "$"
/// alone. Anything else could be more than a name.
bool NomeDeSql(std::string_view nome);
/// Whether a table, column, search or index is the customer's own addition: "U_" before its name, in any letter case.
bool DoCliente(std::string_view nome);
/// What is told of a name that is not one; `onde` says where it stands. The row that has it is passed over.
std::string RecusaDoNome(std::string_view onde, std::string_view nome);
/// SQL string literal: in single quotes, embedded quotes doubled.
std::string Aspas(std::string_view texto);
/// Every occurrence of `de` replaced by `para`; `de` must not be empty.
std::string Troca(std::string_view texto, std::string_view de, std::string_view para);
/// Pieces between the separators; an empty text has no piece.
std::vector<std::string> Divide(std::string_view texto, char separador);
std::string Junta(const std::vector<std::string>& partes, std::string_view separador);
/// The statement that inserts one row. Without `valores` they are the parameters :p0, :p1, ...; without `colunas` every
/// column gets its default.
std::string ComandoInsere(std::string_view tabela, const std::vector<std::string>& colunas,
                          std::vector<std::string> valores = {});

bool Utf8Valido(std::string_view bytes);
/// Windows-1252 bytes as UTF-8; the five unassigned bytes become the control characters of the same number.
std::string De1252(std::string_view bytes);
/// UTF-8 as Windows-1252 bytes. Throws TErroConversao when a character has no place there.
std::string Para1252(std::string_view utf8);
/// Bytes of unknown origin as UTF-8: as they are when they are valid UTF-8, else read as Windows-1252.
std::string TextoDeBytes(std::string_view bytes);
/// Length of the start of `utf8` that does not end inside a character.
std::size_t CaracteresInteiros(std::string_view utf8);
/// UTF-8 as UTF-16; bytes that are not UTF-8 are read as Windows-1252.
std::u16string TextoLargo(std::string_view utf8);
/// UTF-16 as UTF-8; half a pair becomes U+FFFD.
std::string TextoEstreito(std::u16string_view utf16);

}  // namespace wkd
