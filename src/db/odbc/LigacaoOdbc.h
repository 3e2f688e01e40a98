#pragma once

#include <sql.h>
#include <sqlext.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wkd {

class TComandoOdbc;

/// One connection of the driver. A driver may take but one active statement on it: the command whose rows are being
/// read is `cursor`.
class TLigacaoOdbc {
  public:
    /// Connects. `segundos` is how long the server may take; `senha` is left out of what an error says.
    TLigacaoOdbc(const std::string& cadeia, unsigned segundos, std::string_view senha);
    ~TLigacaoOdbc();
    TLigacaoOdbc(const TLigacaoOdbc&) = delete;
    TLigacaoOdbc& operator=(const TLigacaoOdbc&) = delete;

    SQLHDBC Handle() { return dbc_; }
    /// Disconnects; every statement of it is gone.
    void Desliga() noexcept;
    bool Ligada() const { return ligada_; }
    /// Without it, statements wait for Termina().
    void CommitAutomatico(bool liga);
    /// Ends the open transaction: SQL_COMMIT or SQL_ROLLBACK.
    void Termina(SQLSMALLINT como, std::string_view comando);
    /// Answer of SQLGetInfo to a question with a text.
    std::string Informacao(SQLUSMALLINT qual);
    /// Whether the driver wants to know how long a content is before it takes it in pieces.
    bool QuerTamanhoAntes();

    TComandoOdbc* cursor = nullptr;

  private:
    void Conecta(const std::string& cadeia, unsigned segundos, std::string_view senha);

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
