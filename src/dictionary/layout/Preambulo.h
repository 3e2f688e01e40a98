#pragma once

#include <string>
#include <vector>

#include "datamodule/DataModulo.h"

namespace wkd {

/// Brings the dictionary tables to their current layout: drops obsolete tables, creates missing ones, adds missing
/// columns. Issues nothing on a current database. Failing additions are ignored.
void AtualizaTabelasDoDicionario(TDataModulo& dm);

/// A statement that AtualizaTabelasDoDicionario would issue.
struct TComandoDoDicionario {
    std::string tabela, texto;
    std::string coluna, tipo;  // empty when it is about a whole table
};
std::vector<TComandoDoDicionario> PendenciasDoDicionario(TDataModulo& dm);

/// Dormant: returns at once. Kept with the statements that document the sizes the dictionary has reached.
void AtualizaTabelaSistema();

}  // namespace wkd
