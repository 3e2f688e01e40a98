#pragma once

#include <string>

#include "odbc/Odbc.h"
#include "odbc/SessaoOdbc.h"
#include "values/Campo.h"

namespace wkd {

/// What a driver says of a column.
struct TDescricaoOdbc {
    SQLSMALLINT tipo = SQL_UNKNOWN_TYPE;
    SQLULEN tamanho = 0;
    SQLSMALLINT escala = 0;
};

/// Kind, size and scale of such a column as the rest of the program knows them.
TCampo TipoDe(const TDescricaoOdbc& descricao);

/// Value of a column of the fetched row, which is read once, from the left to the right. A blob comes as a content of
/// its own, a memo likewise as UTF-8. CHAR comes without its padding blanks.
TValor LeValor(TInstrucaoOdbc& instrucao, SQLUSMALLINT coluna, const TDescricaoOdbc& descricao,
               std::string_view comando);

}  // namespace wkd
