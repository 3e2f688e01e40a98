#pragma once

#include <string_view>
#include <vector>

#include "Contexto.h"

namespace wkd {

/// One-off corrections of past releases that run before the tables; each runs once per database.
void QuerysAnteriores(TContexto& ctx);
/// Those that run after the tables. On an older-generation database the earlier ones run first, here.
void QuerysPosteriores(TContexto& ctx);

/// Corrections that a run with these options would execute, by name; the database has seen the others.
std::vector<std::string_view> CorrecoesPendentes(TContexto& ctx);
/// Whether one of them, before the tables, names the table.
bool CorrecaoMexeAntes(TContexto& ctx, std::string_view tabela);

}  // namespace wkd
