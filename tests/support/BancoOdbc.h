#pragma once

#include <optional>
#include <string>

#include "AmbienteDeBanco.h"
#include "PastaTemporaria.h"
#include "aliases/Aliases.h"

namespace wkd {

/// A new SQLite file, reached through its ODBC driver.
class TBancoSqlite : public TBancoDeTeste {
  public:
    TBancoSqlite();
    TConnection& Conexao() override { return *conexao_; }
    std::unique_ptr<TConnection> Outra() override;
    std::string Tipo(std::string_view firebird) const override;
    static bool Instalado();

  private:
    TPastaTemporaria pasta_;
    std::unique_ptr<TConnection> conexao_;
};

/// The server that the connection string of the environment variable WKD_SQLSERVER names, such as
/// "SERVER=host;PORT=1433;UID=sa;PWD=...;DRIVER=FreeTDS". The tests make a database of their own there, which is
/// dropped at the end of the process.
class TBancoSqlServer : public TBancoDeTeste {
  public:
    /// Empties the database.
    TBancoSqlServer();
    TConnection& Conexao() override { return *conexao_; }
    std::unique_ptr<TConnection> Outra() override;
    std::string Tipo(std::string_view firebird) const override;
    static bool Instalado();
    /// Of the database of the tests.
    static TParametrosConexao Parametros();

  private:
    std::unique_ptr<TConnection> conexao_;
};

}  // namespace wkd
