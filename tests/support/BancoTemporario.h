#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "PastaTemporaria.h"
#include "aliases/Aliases.h"
#include "connection/Connection.h"

namespace wkd {

/// An empty Firebird database in a temporary folder with an open connection, gone at the end.
class TBancoTemporario {
  public:
    /// Default character set of the database, NONE when empty; `servidor` is "host/port", that of the tests when
    /// empty.
    explicit TBancoTemporario(std::string_view conjunto = "UTF8", std::string_view servidor = "");

    TConnection& Conexao() { return *conexao_; }
    /// Another connection to the same database, open.
    std::unique_ptr<TConnection> Outra() const;
    /// What the connections are made of; a test may change a copy.
    const TParametrosConexao& Parametros() const { return parametros_; }
    std::filesystem::path Arquivo() const { return pasta_ / "banco.fdb"; }

  private:
    TPastaTemporaria pasta_;
    TParametrosConexao parametros_;
    std::unique_ptr<TConnection> conexao_;
};

/// Where the databases of the tests are: empty for the embedded engine; with WKD_FIREBIRD4, see scripts/firebird4.sh, a
/// server of that version.
std::string ServidorDosTestes();

/// Driver parameters of a database; `servidor` as above.
TParametrosConexao ParametrosFirebird(const std::filesystem::path& arquivo, std::string_view servidor = "");

}  // namespace wkd
