#include "ParametrosConexao.h"

#include "Aliases.h"
#include "Texto.h"

namespace wkd {

namespace {

/// Without host the file is opened here, by the embedded engine.
std::string BancoFirebird(const TAlias& alias) {
    return (alias.hostname.empty() ? "" : alias.hostname + ":") + alias.path + alias.database;
}

void AdicionaSqlServer(TParametrosConexao& parametros, const TAlias& alias) {
    parametros.Adiciona("Database", alias.database);
    parametros.Adiciona("Server", alias.hostname);
    parametros.Adiciona("SchemaOverride", "sa.dbo");
    parametros.Adiciona("Prepare SQL", "False");
    parametros.Adiciona("ConnectTimeout", "60");
    parametros.Adiciona("Mars_Connection", "True");
    parametros.Adiciona("HostName", alias.hostname);
    parametros.Adiciona("BlobSize", "-1");
    parametros.Adiciona("ErrorResourceFile", "");
    parametros.Adiciona("LocaleCode", "0000");
    parametros.Adiciona("IsolationLevel", "ReadCommitted");
    if (!alias.driver.empty()) parametros.Adiciona("Driver", alias.driver);
    if (!alias.encrypt.empty()) parametros.Adiciona("Encrypt", alias.encrypt);
    if (!alias.trustServerCertificate.empty())
        parametros.Adiciona("TrustServerCertificate", alias.trustServerCertificate);
}

}  // namespace

std::string TParametrosConexao::Valor(std::string_view chave) const {
    for (const auto& [nome, valor] : pares_)
        if (IgualSemCaixa(nome, chave)) return valor;
    return {};
}

TParametrosConexao ParametrosDoAlias(const TAlias& alias) {
    TParametrosConexao parametros;
    const auto tipo = StrToTipoBanco(alias.tipoBanco);
    if (!tipo || *tipo == TTipoBanco::tbMySQL || *tipo == TTipoBanco::tbOracle) return parametros;
    parametros.Adiciona("User_Name", alias.usuario);
    parametros.Adiciona("Password", alias.senha);
    if (*tipo == TTipoBanco::tbInterbase) {
        parametros.Adiciona("Database", BancoFirebird(alias));
        if (!alias.characterSet.empty()) parametros.Adiciona("CharacterSet", alias.characterSet);
    } else if (*tipo == TTipoBanco::tbSQLServer) {
        AdicionaSqlServer(parametros, alias);
    } else {
        parametros.Adiciona("Database", alias.database);
        parametros.Adiciona("DataSource", alias.hostname);
    }
    return parametros;
}

}  // namespace wkd
