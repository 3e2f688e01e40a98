#include "AmbienteDeBanco.h"

#include <cstdlib>

#include "BancoOdbc.h"
#include "BancoTemporario.h"
#ifndef _WIN32
#include "ServidorFirebird.h"
#endif

namespace wkd {
namespace {

class TBancoFirebird : public TBancoDeTeste {
  public:
    explicit TBancoFirebird(std::string_view servidor) : banco_("UTF8", servidor) {}
    TConnection& Conexao() override { return banco_.Conexao(); }
    std::unique_ptr<TConnection> Outra() override { return banco_.Outra(); }
    std::string Tipo(std::string_view firebird) const override { return std::string(firebird); }

  private:
    TBancoTemporario banco_;
};

#ifdef _WIN32
/// Started by scripts/windows-prova.sh.
bool HaServidor() { return std::getenv("WKD_FIREBIRD") != nullptr; }
std::unique_ptr<TBancoDeTeste> NoServidor() { return std::make_unique<TBancoFirebird>(std::getenv("WKD_FIREBIRD")); }
#else
bool HaServidor() { return TServidorFirebird::Instalado() && std::getenv("WKD_FIREBIRD4") == nullptr; }
std::unique_ptr<TBancoDeTeste> NoServidor() {
    return std::make_unique<TBancoFirebird>(TServidorFirebird::DoProcesso().Endereco());
}
#endif

}  // namespace

std::vector<TAmbienteDeBanco> AmbientesDeBanco() {
    const auto dosTestes = [] { return std::make_unique<TBancoFirebird>(""); };
    return {{"FirebirdEmbutido", [] { return std::getenv("WKD_FIREBIRD4") == nullptr; }, dosTestes},
            {"FirebirdServidor", &HaServidor, &NoServidor},
            {"Firebird4Servidor", [] { return std::getenv("WKD_FIREBIRD4") != nullptr; }, dosTestes},
            {"OdbcSqlite", &TBancoSqlite::Instalado, [] { return std::make_unique<TBancoSqlite>(); }, false, 3},
            {"OdbcSqlServer", &TBancoSqlServer::Instalado, [] { return std::make_unique<TBancoSqlServer>(); }, true, 3,
             33557097}};
}

}  // namespace wkd
