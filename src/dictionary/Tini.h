#pragma once

#include <string>
#include <string_view>

#include "Connection.h"

namespace wkd {

/// Settings table inside the business database, one row per section and key. A null connection reads nothing and
/// writes nothing.
std::string LeParametro(std::string_view secao, std::string_view chave, std::string_view padrao, TConnection* conexao);
void GravaParametro(std::string_view secao, std::string_view chave, std::string_view valor, TConnection* conexao);

}  // namespace wkd
