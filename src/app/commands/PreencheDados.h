#pragma once

#include <optional>
#include <string>
#include <vector>

#include "context/Contexto.h"
#include "dialect/Dialeto.h"
#include "process/Programa.h"
#include "run/UsuariosOnline.h"

namespace wkd {

/// What the alias page shows of the chosen alias.
struct TDadosDoAlias {
    std::string numUsuarios;  // or "-1 (Versão HBN3)"
    std::vector<TUsuarioOnline> usuarios;
    std::string caminhoBanco;
    bool usuariosOnline = false;  // the database has its table of connected users
    std::optional<TErro> erro;    // why the alias could not be opened, or its users not be read
    bool conectado = false;
    std::vector<TConectado> conectados;  // beside this program, as ListaConectados finds them
    std::string semConectados;           // why not; empty otherwise
};

/// Adds the connections that the server knows.
void ListaConectados(THBNConnection& conexao, TDadosDoAlias& dados);

/// What is said of a database that did not open: the cause, the next thing to do, and then the server's own words.
std::string ExplicaConexao(const TErro& erro);

/// Exit code of whoever needed it open.
inline TCodigoDeSaida CodigoSemConexao(const TDadosDoAlias& dados) {
    const bool outra = dados.erro && dados.erro->falha == TFalha::OutraAtualizacao;
    return outra ? TCodigoDeSaida::Encerrada : TCodigoDeSaida::SemConexao;
}

/// Opens the alias on the data module's connection and lists its connected users; sets the online-users flag.
TDadosDoAlias PreencheDados(TDataModulo& dm, TEstado& estado, const std::string& alias);

}  // namespace wkd
