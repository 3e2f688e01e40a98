#pragma once

#include <string>
#include <vector>

#include "BancoOdbc.h"
#include "PastaTemporaria.h"
#include "TelaDeTeste.h"
#include "datamodule/DataModulo.h"

namespace wkd {

/// Statements of the example database in a server's own words; `sqlServer` turns Firebird's types into those of SQL
/// Server.
std::vector<std::string> ComandosDaLoja(const std::filesystem::path& script, bool sqlServer);

/// The tests' database on the SQL Server of WKD_SQLSERVER, as an alias.
TAlias AliasDoSqlServer(std::string nome);

/// The example database on the SQL Server of WKD_SQLSERVER, and a data module on its alias "LOJA".
class TLojaSqlServer {
  public:
    explicit TLojaSqlServer(const std::filesystem::path& script);

    TDataModulo& Modulo() { return modulo_; }
    TConnection& Conexao() { return modulo_.SQLConnection1; }
    TTelaDeTeste& Tela() { return tela_; }
    const TPastaTemporaria& Pasta() const { return pasta_; }

  private:
    static TAliases GravaAlias(const std::filesystem::path& ini);

    TPastaTemporaria pasta_;
    TBancoSqlServer banco_;
    TTelaDeTeste tela_;
    TDataModulo modulo_;
};

}  // namespace wkd
