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

#include "RelogioDeEspera.h"

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

}  // namespace wkd
