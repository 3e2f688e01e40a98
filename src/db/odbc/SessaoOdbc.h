#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "aliases/Aliases.h"
#include "connection/Connection.h"
#include "dialect/DialetoSqlServer.h"
#include "odbc/EmCurso.h"
#include "odbc/ErroOdbc.h"
#include "odbc/Odbc.h"

namespace wkd {

class TComandoOdbc;

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
    /// Without it, statements wait for Termina(). On from the start.
    void CommitAutomatico(bool liga);
    /// Ends the open transaction: SQL_COMMIT or SQL_ROLLBACK.
    void Termina(SQLSMALLINT como, std::string_view comando);
    /// Answer of SQLGetInfo to a question with a text.
    std::string Informacao(SQLUSMALLINT qual);
    /// Whether the driver wants to know how long a content is before it takes it in pieces.
    bool QuerTamanhoAntes();

    /// Its number on the server, for those who end it there when it is lost.
    void DefineNumero(const std::string& numero);
    /// Scope of a call that may wait for the server.
    TEmCurso::TChamada Chamada(SQLHSTMT instrucao = SQL_NULL_HSTMT) { return {*emCurso_, soquete_, instrucao}; }

    TComandoOdbc* cursor = nullptr;

  private:
    void Conecta(const std::string& cadeia, unsigned segundos, std::string_view senha);

    std::shared_ptr<TEmCurso> emCurso_;
    std::shared_ptr<TSoqueteOdbc> soquete_;
    std::string numero_;
    SQLHENV env_ = SQL_NULL_HENV;
    SQLHDBC dbc_ = SQL_NULL_HDBC;
    bool ligada_ = false;
    bool commitAutomatico_ = true;
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
    /// Scope of calls for this statement that may wait for the server.
    TEmCurso::TChamada Chamada() { return ligacao_->Chamada(stmt_); }
    /// Throws the error of a call unless it went well, TInterrompida when the process is to end: after a cancellation a
    /// call may look as if it had gone well.
    void Confere(SQLRETURN retorno, std::string_view comando) const;
    TErroBanco Erro(std::string_view comando) const {
        return ErroOdbc(SQL_HANDLE_STMT, stmt_, comando, ligacao_->Handle());
    }
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
    const TDialeto& Dialeto() const { return dialeto_; }

    /// The main connection, its cursor's rows taken over by their command. Throws TErroBanco when closed.
    std::shared_ptr<TLigacaoOdbc> Principal();
    /// The main connection for a statement, and whether it commits by itself: one that stands alone in its text does
    /// outside a transaction, which spares a turn to the server.
    std::pair<std::shared_ptr<TLigacaoOdbc>, bool> ParaExecutar(std::string_view sql);
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
    std::string Numeros() const { return emCurso_->Numeros().Todos(); }

    void DefineObservador(TConnection::TObservador observador) { observador_ = std::move(observador); }
    /// Before every statement and commit; both at once for one that commits by itself.
    void Observa(std::string_view comando, bool sozinho = false);

    /// Columns of tables whose rows statements store, by the names that they give them: whoever asked keeps the answer
    /// here. Gone with any statement that may change a table, and when one is undone.
    TColunasPorTabela& Alvos() { return alvos_; }

  private:
    std::shared_ptr<TLigacaoOdbc> Conecta();
    void ExigeLigacao() const;
    void Ajusta(const std::shared_ptr<TLigacaoOdbc>& ligacao);
    static std::int32_t Pergunta(const std::shared_ptr<TLigacaoOdbc>& ligacao, std::string_view sql);
    bool TransacaoDePe();
    std::string Motivo(const TErroBanco& erro) const;
    void Encerra() noexcept;

    TParametrosConexao parametros_;
    std::shared_ptr<TEmCurso> emCurso_ = std::make_shared<TEmCurso>();
    bool perdida_ = false;
    bool sqlServer_ = false;
    TDialetoSqlServer dialeto_;
    std::shared_ptr<TLigacaoOdbc> principal_;
    std::shared_ptr<TLigacaoOdbc> emDescanso_;  // the main one, while another has the transaction
    std::vector<std::shared_ptr<TLigacaoOdbc>> leitoras_;
    std::vector<std::string> ajustes_;
    bool emTransacao_ = false;
    bool desfeita_ = false;  // by the server, after an error
    std::string motivo_;     // text of that error
    TConnection::TObservador observador_;
    TColunasPorTabela alvos_;
};

}  // namespace wkd
