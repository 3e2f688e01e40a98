#pragma once

#include <string>
#include <string_view>

#include "connection/Connection.h"
#include "tables/Dicionario.h"

namespace wkd {

/// False for calculated and aggregate columns.
bool ColunaFisica(const TColunaDicionario& coluna);
/// Whether the type has a column type text ("GUID" counts as ftGUID).
bool TipoConhecido(std::string_view tipo);

/// Size of a text column that has none in the dictionary.
inline constexpr int kTamanhoPadrao = 150;
/// Characters of a text column: the dictionary's number, or kTamanhoPadrao when it is empty or zero.
int TamanhoDoTexto(std::string_view tamanho);

/// Text that follows the column name in CREATE and ALTER statements: type, default, null part. Quotes in a default
/// are doubled, the comma of a floating default becomes a point.
std::string DefinicaoCampo(const TColunaDicionario& coluna, TTipoBanco banco);
/// The type text alone.
std::string TipoDaColuna(std::string_view tipo, std::string_view tamanho, TTipoBanco banco);
/// A type text, of the dictionary or the catalogue, without blanks and without what a declaration may leave out.
std::string TipoNormal(std::string_view tipo);

}  // namespace wkd
