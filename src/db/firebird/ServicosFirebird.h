#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "aliases/Aliases.h"
#include "values/Valor.h"

namespace wkd {

/// Backup and restore by the service manager of a server, or of the embedded engine; either way the backup itself goes
/// through this program, so that the server needs no folder of this machine and this program none of the server's.
/// Parameters read: those of a connection. What a callback throws ends the service. Throws TErroBanco.
class TServicosFirebird {
  public:
    using TRecebe = std::function<void(std::string_view bytes)>;
    using TLinha = std::function<void(std::string_view linha)>;

    explicit TServicosFirebird(const TParametrosConexao& parametros);
    ~TServicosFirebird() { Desliga(); }
    TServicosFirebird(const TServicosFirebird&) = delete;
    TServicosFirebird& operator=(const TServicosFirebird&) = delete;

    /// The database of the parameters as a stream; called with no bytes every now and then, too. Reads alone: nothing
    /// of the database is cleaned up by the way.
    /// `soEsquema`: everything but rows, of which none is in it.
    void FazBackup(const TRecebe& recebe, bool soEsquema = false);
    /// Makes the database of the parameters, which must not exist, from such a stream. `linha` gets what the service
    /// does, and an empty line every now and then. Shadows, files of their own beside the original's, do not come back.
    /// What was made until a failure is left to the caller.
    void Restaura(TLeitorBytes& fonte, const TLinha& linha);
    /// Whether the service said that it made the database: then nobody else did.
    bool Criou() const { return criou_; }

  private:
    void Liga();
    void Desliga() noexcept;
    void Comeca(const std::string& pedido);
    std::string Pedido(char acao, std::string_view arquivo) const;
    void Alimenta(TLeitorBytes& fonte, const TLinha& linha);
    void EncerraEntrada() noexcept;
    /// One question and its answer.
    void Pergunta(const std::string& envia, const std::string& itens);

    std::string servico_, banco_, usuario_, senha_;
    unsigned ligacao_ = 0;
    bool criou_ = false;
    std::string resposta_;
};

/// Removes a database and its file. Throws TErroBanco.
void ApagaBancoFirebird(const TParametrosConexao& parametros);

/// What a path on a server, or on this machine, is called there: without "host:".
std::string SemServidor(std::string_view banco);

}  // namespace wkd
