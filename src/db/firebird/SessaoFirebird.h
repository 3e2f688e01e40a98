#pragma once

#include <ibase.h>
#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "aliases/Aliases.h"
#include "connection/Connection.h"
#include "dialect/DialetoFirebird.h"
#include "process/Interrupcao.h"
#include "values/ConjuntoFirebird.h"

namespace wkd {

class TTransacaoFirebird;

/// Attachment to a database and the transactions on it: what the connection shares with its commands and contents,
/// which may outlive it.
class TSessaoFirebird {
  public:
    explicit TSessaoFirebird(const TParametrosConexao& parametros);
    ~TSessaoFirebird() { Desliga(); }
    TSessaoFirebird(const TSessaoFirebird&) = delete;
    TSessaoFirebird& operator=(const TSessaoFirebird&) = delete;

    /// Attaches with the character set of that name.
    void Liga(std::string_view conjunto);
    /// Rolls back every transaction and detaches.
    void Desliga() noexcept;
    /// Detaches and attaches again. After a failed ADD ... NOT NULL Firebird 3.0 refuses every insert and update of
    /// the table in this attachment.
    void Renova();
    bool Ligada() const { return banco_ != 0; }

    isc_db_handle* Banco() { return &banco_; }
    /// Host of the engine, "host/port:file"; empty for the embedded one. One letter is a drive.
    std::string Servidor() const;
    /// Grows with every attachment; what was prepared in an older one is gone.
    unsigned Geracao() const { return geracao_; }
    /// Statement text in the connection's character set and the server's words.
    std::string TextoSql(std::string_view utf8) const;

    /// Throws the error of a call unless it went well.
    void Confere(const ISC_STATUS* estado, std::string_view comando);
    /// The error of a failed call. One that the connection is not to outlive condemns it. Throws TInterrompida instead
    /// when the statement was broken off because the process is to end.
    TErroBanco Erro(const ISC_STATUS* estado, std::string_view comando);
    /// Detaches a condemned connection, and throws why. Firebird 3.0 goes on with pages that it could not write, on a
    /// full disk as well, and may then put them in wrong places: the header of a database was lost in this way.
    void ConfereConexao();

    /// Condemned by something that another connection mends: the network or the server, not the disk.
    bool Perdida() const { return perdida_; }
    /// Every call that may wait for the server is noted here while it lasts.
    TRelogioDeEspera& Relogio() { return relogio_; }
    /// Breaks the line to the server, so that the call under way fails; of any thread. An embedded engine has none.
    void Cancela() noexcept;
    /// Number of the attachment, 0 before the first.
    std::int64_t Numero() const { return numero_; }
    /// What the engine says of the open database (isc_info_...), as a number; 0 when it does not say.
    std::int64_t Informacao(char qual);
    /// The same of several items at once, by their bytes; what the engine does not know is not among them.
    std::multimap<char, std::string> Informacoes(std::string_view itens);
    const TDialeto& Dialeto() const { return dialeto_; }
    TSaude Saude();

    void DefineObservador(TConnection::TObservador observador) { observador_ = std::move(observador); }
    void Observa(std::string_view comando) const {
        if (observador_) observador_(comando);
    }

    /// The transaction that the program has open; null without one.
    std::unique_ptr<TTransacaoFirebird> transacao;
    /// A reading one for the system tables. It stays open: it sees what is committed meanwhile, and no statement waits
    /// for it.
    TTransacaoFirebird& Catalogo();

  private:
    friend class TTransacaoFirebird;

    TCapacidades Capacidades();
    /// Breaks off what the server is doing for this connection; one that does not answer is closed. Of another thread.
    void Interrompe(TInterrupcao::TEtapa etapa) noexcept;

    TParametrosConexao parametros_;
    std::string nomeDoConjunto_;
    TConjunto conjunto_ = TConjunto::Utf8;
    isc_db_handle banco_ = 0;
    TDialetoFirebird dialeto_;
    std::mutex ligando_;     // held while banco_ changes
    std::string condenada_;  // by this error
    bool perdida_ = false;
    std::int64_t numero_ = 0;
    TRelogioDeEspera relogio_;
    std::atomic<isc_db_handle> paraCancelar_ = 0;  // banco_, for other threads
    std::atomic<bool> cancelada_ = false;
    unsigned geracao_ = 0;
    TConnection::TObservador observador_;
    std::unique_ptr<TTransacaoFirebird> catalogo_;
    std::vector<TTransacaoFirebird*> abertas_;
    TOuvinteDeInterrupcao ouvinte_{[this](auto etapa) { Interrompe(etapa); }};
};

/// Transaction of a scope, rolled back by the destructor unless committed.
class TTransacaoFirebird {
  public:
    /// Leitura: read-only, read committed; costs no page write. Escrita: read committed, waits at most 10 s for a lock.
    /// Instantaneo: read-only, of what is committed at its beginning.
    enum class TModo { Leitura, Escrita, EscritaSemEspera, Instantaneo };

    /// With `protegida`, for writing, nobody else writes into the table of that name until the end.
    TTransacaoFirebird(TSessaoFirebird& sessao, TModo modo, std::string_view protegida = {});
    ~TTransacaoFirebird();
    TTransacaoFirebird(const TTransacaoFirebird&) = delete;
    TTransacaoFirebird& operator=(const TTransacaoFirebird&) = delete;

    isc_tr_handle* Handle() { return &handle_; }
    /// On an error the transaction is rolled back; `comando` is the statement that the error names.
    void Commit(std::string_view comando = "commit");
    void Rollback() noexcept;

  private:
    TSessaoFirebird& sessao_;
    TModo modo_;
    isc_tr_handle handle_ = 0;
};

/// Parameter block of a connection: user, password, character set.
std::string BlocoDeConexao(const TParametrosConexao& parametros, std::string_view conjunto);
/// Adds a text or a number to a parameter block. Throws std::invalid_argument for a text above 255 bytes.
void AdicionaAoBloco(std::string& bloco, char item, std::string_view valor);
void AdicionaAoBloco(std::string& bloco, char item, std::uint32_t valor);

/// A table of no rows and of no dictionary, made by the first update and left out of what a connection lists.
inline constexpr std::string_view kTabelaDaTrava = "ATUALIZAWKD$TRAVA";

/// The lock of one update a database on a Firebird server: a reservation of that table, which needs no right to it and
/// no row, keeps nobody out but another update, and goes with the attachment. It does not tell who has it: a context
/// variable of the attachment does, which the monitoring tables show to the others of the same user, to SYSDBA and to
/// the owner. Where nobody could make the table, what these see is the lock.
class TTravaFirebird {
  public:
    explicit TTravaFirebird(std::shared_ptr<TSessaoFirebird> sessao);

    /// Waits a moment for one whom it does not see: the server may be about to give him up.
    bool Toma(std::string_view texto);
    void Anuncia(std::string_view texto);
    /// For another connection than the holder's: what he announced, his user and attachment; empty when this user may
    /// not see him.
    std::optional<std::string> Quem();

  private:
    enum class TReserva { Nossa, Alheia, SemTabela };
    TReserva Reserva();
    void CriaTabela();
    std::optional<std::string> Visivel();
    void Grava(const std::optional<std::string>& valor);

    std::shared_ptr<TSessaoFirebird> sessao_;
    /// Of this object: what it left on a connection that the server takes for alive is no other's.
    std::string marca_;
    std::unique_ptr<TTransacaoFirebird> reserva_;
};

}  // namespace wkd
