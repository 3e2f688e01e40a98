#pragma once

#include <sql.h>
#include <sqlext.h>
#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "aliases/Aliases.h"
#include "connection/Connection.h"

namespace wkd {

class TComandoOdbc;

/// The call to the server that a session has under way.
class TEmCurso {
  public:
    class TChamada {
      public:
        TChamada(TEmCurso& emCurso, SQLHSTMT instrucao);
        ~TChamada();
        TChamada(const TChamada&) = delete;
        TChamada& operator=(const TChamada&) = delete;

      private:
        TEmCurso& emCurso_;
        TRelogioDeEspera::TChamada relogio_;
    };

    std::chrono::milliseconds Espera() const { return relogio_.Espera(); }
    /// Asks the driver to give the statement under way up; of any thread.
    void Cancela() noexcept;
    bool Cancelado() const { return cancelado_; }
    void Recomeca() { cancelado_ = false; }

  private:
    TRelogioDeEspera relogio_;
    std::mutex guarda_;
    SQLHSTMT instrucao_ = SQL_NULL_HSTMT;  // behind guarda_
    std::atomic<bool> cancelado_ = false;
};

/// One connection of the driver. A driver may take but one active statement on it: the command whose rows are being
/// read is `cursor`.
class TLigacaoOdbc {
  public:
    /// Connects. `segundos` is how long the server may take; `senha` is left out of what an error says.
    TLigacaoOdbc(const std::string& cadeia, unsigned segundos, std::string_view senha,
                 std::shared_ptr<TEmCurso> emCurso);
    ~TLigacaoOdbc();
    TLigacaoOdbc(const TLigacaoOdbc&) = delete;
    TLigacaoOdbc& operator=(const TLigacaoOdbc&) = delete;

    SQLHDBC Handle() { return dbc_; }
    /// Disconnects; every statement of it is gone. A lost one is not asked to end its transaction first.
    void Desliga(bool perdida = false) noexcept;
    bool Ligada() const { return ligada_; }
    /// Without it, statements wait for Termina().
    void CommitAutomatico(bool liga);
    /// Ends the open transaction: SQL_COMMIT or SQL_ROLLBACK.
    void Termina(SQLSMALLINT como, std::string_view comando);
    /// Answer of SQLGetInfo to a question with a text.
    std::string Informacao(SQLUSMALLINT qual);
    /// Whether the driver wants to know how long a content is before it takes it in pieces.
    bool QuerTamanhoAntes();

    TEmCurso& EmCurso() { return *emCurso_; }

    TComandoOdbc* cursor = nullptr;

  private:
    void Conecta(const std::string& cadeia, unsigned segundos, std::string_view senha);

    std::shared_ptr<TEmCurso> emCurso_;
    SQLHENV env_ = SQL_NULL_HENV;
    SQLHDBC dbc_ = SQL_NULL_HDBC;
    bool ligada_ = false;
    std::optional<bool> querTamanhoAntes_;
};

/// Statement handle of a connection, freed by the destructor.
class TInstrucaoOdbc {
  public:
    explicit TInstrucaoOdbc(std::shared_ptr<TLigacaoOdbc> ligacao);
    ~TInstrucaoOdbc();
    TInstrucaoOdbc(const TInstrucaoOdbc&) = delete;
    TInstrucaoOdbc& operator=(const TInstrucaoOdbc&) = delete;

    SQLHSTMT Handle() { return stmt_; }
    TLigacaoOdbc& Ligacao() { return *ligacao_; }
    void Confere(SQLRETURN retorno, std::string_view comando) const;
    /// Runs a text without parameters and without rows that anybody wants.
    void Executa(std::string_view sql, std::string_view comando);
    /// Goes through the results that are left, so that no error of theirs is missed; returns the row count of the last
    /// one that has one.
    SQLLEN Esgota(std::string_view comando);
    void FechaCursor() noexcept;

  private:
    std::shared_ptr<TLigacaoOdbc> ligacao_;
    SQLHSTMT stmt_ = SQL_NULL_HSTMT;
};

/// Names of the drivers that the ODBC configuration knows.
std::vector<std::string> DriversInstalados();

/// What a connection shares with its commands, which may outlive it: the main connection of the driver, which all
/// writing and every transaction goes through, and further ones for reading while other statements run.
class TSessaoOdbc {
  public:
    explicit TSessaoOdbc(const TParametrosConexao& parametros) : parametros_(parametros) {}

    void Liga();
    void Desliga() noexcept;
    bool Ligada() const { return principal_ != nullptr; }
    /// Whether the server speaks T-SQL.
    bool SqlServer() const { return sqlServer_; }

    /// The main connection, its cursor's rows taken over by their command. Throws TErroBanco when closed.
    std::shared_ptr<TLigacaoOdbc> Principal();
    /// The connection to read on: the main one inside a transaction, else one that no cursor uses.
    std::shared_ptr<TLigacaoOdbc> ParaLer();
    bool EhPrincipal(const std::shared_ptr<TLigacaoOdbc>& ligacao) const { return ligacao && ligacao == principal_; }
    /// A further connection for whoever asks alone.
    std::shared_ptr<TLigacaoOdbc> Nova();
    /// A statement such as "set dateformat", which every further connection runs first.
    void Lembra(std::string_view ajuste) { ajustes_.emplace_back(ajuste); }

    // The program's transaction
    void StartTransaction();
    /// The one that this connection has open already: it is the main connection until the transaction ends.
    void StartTransaction(std::shared_ptr<TLigacaoOdbc> ligacao);
    void Commit();
    void Rollback() noexcept;
    bool InTransaction() const { return emTransacao_ && !desfeita_; }
    /// Whether a transaction was begun and not ended by the program, be it that the server has undone it.
    bool Comecada() const { return emTransacao_; }
    /// After an error: ends the transaction of a statement of its own; of the program's, asks the server whether it
    /// still stands.
    void DepoisDoErro(const TErroBanco& erro) noexcept;

    /// Whether the main connection met a loss.
    bool Perdida() const { return perdida_; }
    TEmCurso& EmCurso() { return *emCurso_; }
    const std::string& Numero() const { return numero_; }

    void DefineObservador(TConnection::TObservador observador) { observador_ = std::move(observador); }
    void Observa(std::string_view comando) const {
        if (observador_) observador_(comando);
    }

  private:
    std::shared_ptr<TLigacaoOdbc> Conecta();
    void ExigeLigacao() const;
    void Ajusta(const std::shared_ptr<TLigacaoOdbc>& ligacao);
    std::int32_t Pergunta(std::string_view sql);
    bool TransacaoDePe();
    std::string Motivo(const TErroBanco& erro) const;
    void Encerra() noexcept;

    TParametrosConexao parametros_;
    std::shared_ptr<TEmCurso> emCurso_ = std::make_shared<TEmCurso>();
    bool perdida_ = false;
    std::string numero_;  // of the main connection, on a SQL Server
    bool sqlServer_ = false;
    std::shared_ptr<TLigacaoOdbc> principal_;
    std::shared_ptr<TLigacaoOdbc> emDescanso_;  // the main one, while another has the transaction
    std::vector<std::shared_ptr<TLigacaoOdbc>> leitoras_;
    std::vector<std::string> ajustes_;
    bool emTransacao_ = false;
    bool desfeita_ = false;  // by the server, after an error
    std::string motivo_;     // text of that error
    TConnection::TObservador observador_;
};

}  // namespace wkd
