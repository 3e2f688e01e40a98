#pragma once

#include "Contexto.h"

namespace wkd {

/// One-off corrections of past releases that run before the tables; each runs once per database.
void QuerysAnteriores(TContexto& ctx);
/// Those that run after the tables. On an older-generation database the earlier ones run first, here.
void QuerysPosteriores(TContexto& ctx);

}  // namespace wkd
