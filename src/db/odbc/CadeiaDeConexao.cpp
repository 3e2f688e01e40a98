#include "CadeiaDeConexao.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "ArquivoIni.h"
#include "Texto.h"

namespace wkd {
namespace {

constexpr std::array<std::string_view, 3> kDrivers = {"ODBC Driver 18 for SQL Server", "ODBC Driver 17 for SQL Server",
                                                      "FreeTDS"};

/// A value in braces where it holds anything else than letters, digits and some harmless characters. A brace inside
/// is doubled, but for FreeTDS, which takes it as it is and ends the value at "};" only.
std::string Valor(std::string_view valor, bool dobra) {
    const bool simples = std::ranges::all_of(valor, [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) || std::string_view("._-/\\:,").find(c) != std::string::npos;
    });
    return simples ? std::string(valor) : "{" + (dobra ? Troca(valor, "}", "}}") : std::string(valor)) + "}";
}

class TCadeia {
  public:
    explicit TCadeia(bool dobra) : dobra_(dobra) {}
    TCadeia& Adiciona(std::string_view chave, std::string_view valor) {
        if (!valor.empty()) texto_ += std::string(chave) + "=" + Valor(valor, dobra_) + ";";
        return *this;
    }
    std::string Texto() && { return std::move(texto_); }

  private:
    bool dobra_;
    std::string texto_;
};

std::string EscolheDriver(const TParametrosConexao& parametros, const std::vector<std::string>& instalados) {
    if (auto pedido = parametros.Valor("Driver"); !pedido.empty()) return pedido;
    for (const auto nome : kDrivers)
        if (std::ranges::any_of(instalados, [&](const auto& i) { return IgualSemCaixa(i, nome); }))
            return std::string(nome);
    std::vector<std::string> nomes(kDrivers.begin(), kDrivers.end());
    throw TErroConfiguracao(
        "Nenhum driver ODBC para SQL Server está instalado. Instale um destes: " + Junta(nomes, ", ") +
        ". No Debian o último vem com \"apt-get install tdsodbc\"; outro pode ser informado na "
        "chave Driver do alias.");
}

bool DoFreeTds(std::string_view driver) {
    const auto nome = Minusculas(driver);
    return nome.find("freetds") != std::string::npos || nome.find("tdsodbc") != std::string::npos;
}

/// FreeTDS takes the port on its own, "host\instance" as it is.
void AdicionaFreeTds(TCadeia& cadeia, const std::string& servidor) {
    const auto virgula = servidor.find(',');
    const bool instancia = servidor.find('\\') != std::string::npos;
    cadeia.Adiciona("SERVER", Apara(servidor.substr(0, virgula)));
    if (virgula != std::string::npos)
        cadeia.Adiciona("PORT", Apara(servidor.substr(virgula + 1)));
    else if (!instancia)
        cadeia.Adiciona("PORT", "1433");
    cadeia.Adiciona("TDS_Version", "7.4").Adiciona("ClientCharset", "UTF-8");
}

/// The other drivers check the certificate of an encrypted connection unless the alias says otherwise.
void AdicionaServidor(TCadeia& cadeia, const std::string& driver, const TParametrosConexao& parametros) {
    const auto servidor = parametros.Valor("Server");
    if (DoFreeTds(driver))
        AdicionaFreeTds(cadeia, servidor);
    else
        cadeia.Adiciona("SERVER", servidor)
            .Adiciona("Encrypt", parametros.Valor("Encrypt"))
            .Adiciona("TrustServerCertificate", parametros.Valor("TrustServerCertificate"));
    cadeia.Adiciona("APP", "AtualizaWKD");
}

}  // namespace

std::string CadeiaDeConexao(const TParametrosConexao& parametros, const std::vector<std::string>& instalados) {
    const auto fonte = parametros.Valor("DataSource");
    const auto driver = fonte.empty() ? EscolheDriver(parametros, instalados) : "";
    TCadeia cadeia(!DoFreeTds(driver));
    cadeia.Adiciona("DSN", fonte).Adiciona("DRIVER", driver);
    if (fonte.empty()) AdicionaServidor(cadeia, driver, parametros);
    cadeia.Adiciona("DATABASE", parametros.Valor("Database"));
    cadeia.Adiciona("UID", parametros.Valor("User_Name")).Adiciona("PWD", parametros.Valor("Password"));
    return std::move(cadeia).Texto();
}

}  // namespace wkd
