#pragma once

#include <optional>

#include "Manifesto.h"
#include "context/Contexto.h"
#include "copy/Reposicao.h"
#include "plan/ConfereDicionario.h"
#include "server/HBNConnection.h"

namespace wkd {

struct TPedidoDeEnsaio {
    TOpcoes opcoes;               // of the update that is rehearsed
    std::filesystem::path pasta;  // of backups: that of the rehearsal is made there, and removed
    bool mantem = false;          // the copy stays
};

/// What an update did to a copy of the database.
struct TEnsaio {
    TVeredito copia;        // whether the copy was what the database is
    TEvidencia evidencia;   // of the run on it; its errors too
    bool terminou = false;  // the run did not end early
    std::vector<TReposicao::TQueFica> rejeitadas;
    std::vector<TDesvio> desvios;      // from the package's dictionary, that the run left or made
    std::vector<std::string> mudaria;  // tables that a second run would touch again
    std::int64_t usuarios = 0;         // connected to the database in use now
    double segundosDoBackup = 0, segundosDaRestauracao = 0, segundosDaAtualizacao = 0;
    std::uintmax_t bytesDoBackup = 0, bytesAntes = 0, bytesDepois = 0;  // of the copy
    std::string banco;                                                  // where the copy is, when it stays
    std::string backupNoServidor;                                       // that stays there, where nothing removes it

    bool Muda() const;
    bool Pode() const;
    /// "pode atualizar", or why not.
    std::string Frase() const;
    /// Disk that the update may take beside what the database has.
    std::uintmax_t DiscoNecessario() const { return bytesDepois > bytesAntes ? bytesDepois - bytesAntes : 0; }
};

/// Backs the database up, restores the backup as a copy, and makes the real update on the copy, with everything it
/// writes in a folder of its own. The database in use is read alone. Throws TErroDeBackup, TErroBanco,
/// std::system_error when it did not come to the run.
TEnsaio Ensaia(THBNConnection& conexao, const TPedidoDeEnsaio& pedido, const TAcompanha& acompanha);

}  // namespace wkd
