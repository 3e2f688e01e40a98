#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "context/Contexto.h"

namespace wkd {

/// Replaces the stored dictionary rows of one table by those of the package and merges the customer-defined ones, in
/// one transaction: an interruption leaves the old rows or the new ones. Rows that are the new ones already stay. Where
/// the package spells the table's name in other letter case, SARQUIVO follows. A value that its field cannot hold, and
/// a row that the server refuses, is reported in the run log and left out. In a `reconstrucao` the stored rows go
/// whatever the letter case of their table name, and a required field that the package leaves empty gets the current
/// date and time when its name is "DATA" or begins with "DT", else "0". Throws TErroBanco when the whole is refused.
void RegravaDicionario(TContexto& ctx, std::string_view tabela, bool reconstrucao);

/// Why a column of the package would be missing among the stored rows, or be another one there: its name, type or
/// calculation does not fit. Expects SatribNovo on the table.
std::optional<TErro> ColunaForaDoDicionario(TContexto& ctx);

/// Creates the table and its primary key from the stored dictionary; each failure is shown and logged. False when the
/// table could not be created.
bool CriaTabelaComChave(TContexto& ctx, std::string_view tabela);
/// Creates secondary indexes of a table that has been created just now, in the same way.
void CriaIndicesDaNova(TContexto& ctx, std::string_view tabela, TTB::TQuais quais);
/// Both, with all its indexes.
bool CriaTabelaComIndices(TContexto& ctx, std::string_view tabela);

}  // namespace wkd
