#pragma once

#include <string>
#include <vector>

#include "context/Contexto.h"
#include "run/UsuariosOnline.h"

namespace wkd {

/// What the alias page shows of the chosen alias.
struct TDadosDoAlias {
    std::string numUsuarios;  // or "-1 (Versão HBN3)"
    std::vector<TUsuarioOnline> usuarios;
    std::string caminhoBanco;
    bool usuariosOnline = false;    // the database has its table of connected users
    std::string erro;               // why the alias could not be opened; empty otherwise
    bool outraAtualizacao = false;  // which has the database file: that is why
};

/// Opens the alias on the data module's connection and lists its connected users; sets the online-users flag.
TDadosDoAlias PreencheDados(TDataModulo& dm, TEstado& estado, const std::string& alias);

}  // namespace wkd
