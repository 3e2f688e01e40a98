#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "connection/Connection.h"

namespace wkd {

struct TUsuarioOnline {
    std::string nomeCompleto, departamento, email;
    TValor codigo = {};
};

// Users connected to the business system. Nothing in a database of the older generation, whose table of connected
// users, or one of its columns, does not exist; any other error is thrown.

std::optional<std::int64_t> ContaUsuariosOnline(TConnection& conexao);
std::optional<std::vector<TUsuarioOnline>> ListaUsuariosOnline(TConnection& conexao);

/// Takes the mark of being connected from users of these codes, all of them or none: for those whom a crash left with
/// it. How many had it. Throws TErroBanco.
std::int64_t LiberaUsuarios(TConnection& conexao, const std::vector<TValor>& codigos);

}  // namespace wkd
