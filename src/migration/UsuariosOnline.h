#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Connection.h"

namespace wkd {

struct TUsuarioOnline {
    std::string nomeCompleto, departamento, email;
};

/// Number of users connected to the business system. Throws TErroBanco when the database has no user table.
std::int64_t ContaUsuariosOnline(TConnection& conexao);
std::vector<TUsuarioOnline> ListaUsuariosOnline(TConnection& conexao);

}  // namespace wkd
