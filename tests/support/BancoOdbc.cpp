#include "BancoOdbc.h"

#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>

#include "odbc/ConexaoOdbc.h"
#include "values/Texto.h"

namespace wkd {
namespace {

constexpr const char* kDriverSqlite[] = {"/usr/lib/x86_64-linux-gnu/odbc/libsqlite3odbc.so",
                                         "/usr/lib/aarch64-linux-gnu/odbc/libsqlite3odbc.so"};

std::string DriverSqlite() {
    for (const auto* caminho : kDriverSqlite)
        if (std::filesystem::exists(caminho)) return caminho;
    return {};
}

std::unique_ptr<TConnection> Aberta(const TParametrosConexao& parametros) {
    auto conexao = CriaConexaoOdbc(parametros);
    conexao->Open();
    return conexao;
}

/// The server's words; an empty one for what it does not have.
std::string Traduz(const std::map<std::string_view, std::string_view>& tipos, std::string_view firebird) {
    const auto achado = tipos.find(firebird);
    return std::string(achado == tipos.end() ? firebird : achado->second);
}

/// Keys in capitals and values of a connection string; a value may stand in braces.
std::map<std::string, std::string> Chaves(std::string_view cadeia) {
    std::map<std::string, std::string> chaves;
    while (!cadeia.empty()) {
        const auto igual = cadeia.find('=');
        if (igual == std::string_view::npos) break;
        const auto chave = Maiusculas(Apara(cadeia.substr(0, igual)));
        cadeia.remove_prefix(igual + 1);
        const bool chavetas = cadeia.starts_with('{');
        const auto fim = chavetas ? cadeia.find("};") : cadeia.find(';');
        const auto valor = cadeia.substr(0, fim);
        chaves[chave] = chavetas ? Troca(valor.substr(1), "}}", "}") : std::string(valor);
        cadeia.remove_prefix(fim == std::string_view::npos ? cadeia.size() : fim + (chavetas ? 2 : 1));
    }
    return chaves;
}

TParametrosConexao ParametrosDe(const std::string& banco) {
    auto chaves = Chaves(std::getenv("WKD_SQLSERVER"));
    TParametrosConexao parametros;
    const auto servidor = chaves["SERVER"] + (chaves.contains("PORT") ? "," + chaves["PORT"] : "");
    parametros.Adiciona("Server", servidor);
    parametros.Adiciona("User_Name", chaves["UID"]);
    parametros.Adiciona("Password", chaves["PWD"]);
    parametros.Adiciona("Database", banco);
    if (chaves.contains("DRIVER")) parametros.Adiciona("Driver", chaves["DRIVER"]);
    return parametros;
}

/// The database of this process.
class TBancoDoProcesso {
  public:
    TBancoDoProcesso() { NoMestre("create database " + nome_); }
    ~TBancoDoProcesso() {
        try {
            NoMestre("drop database " + nome_);
        } catch (const std::exception&) {
            // what cannot be dropped stays for the server's owner
        }
    }
    const std::string& Nome() const { return nome_; }

    static const TBancoDoProcesso& Unico() {
        static const TBancoDoProcesso banco;
        return banco;
    }

  private:
    static void NoMestre(const std::string& sql) { Aberta(ParametrosDe("master"))->ExecuteDirect(sql); }

    std::string nome_ = "wkd_teste_" + std::to_string(std::random_device()());
};

/// Everything that a test may have made, foreign keys and views first.
void Esvazia(TConnection& conexao) {
    std::vector<std::string> comandos;
    const auto comando = conexao.Prepara(
        "select 'alter table ' + object_name(parent_object_id) + ' drop constraint ' + name from sys.foreign_keys"
        " union all select 'drop view ' + name from sys.views where is_ms_shipped = 0"
        " union all select 'drop procedure ' + name from sys.procedures where is_ms_shipped = 0");
    for (comando->Abre(); comando->Proximo();) comandos.push_back(comando->Valor(0).ComoTexto());
    for (const auto& tabela : conexao.NomesDeTabelas()) comandos.push_back("drop table " + tabela);
    for (const auto& sql : comandos) conexao.ExecuteDirect(sql);
}

}  // namespace

TBancoSqlite::TBancoSqlite() : conexao_(Outra()) {}

std::unique_ptr<TConnection> TBancoSqlite::Outra() {
    TParametrosConexao parametros;
    parametros.Adiciona("Driver", DriverSqlite());
    parametros.Adiciona("Database", (pasta_ / "banco.db").string());
    return Aberta(parametros);
}

std::string TBancoSqlite::Tipo(std::string_view firebird) const {
    return Traduz({{"blob sub_type 0", "longvarbinary"},
                   {"blob sub_type 1", "text"},
                   {"varchar(8) character set octets", "varbinary(8)"},
                   {"numeric(4,1)", ""},
                   {"numeric(9,2)", ""},
                   {"numeric(18,4)", ""}},
                  firebird);
}

bool TBancoSqlite::Instalado() { return !DriverSqlite().empty(); }

TBancoSqlServer::TBancoSqlServer() : conexao_(Outra()) { Esvazia(*conexao_); }

std::unique_ptr<TConnection> TBancoSqlServer::Outra() { return Aberta(Parametros()); }

TParametrosConexao TBancoSqlServer::Parametros() { return ParametrosDe(TBancoDoProcesso::Unico().Nome()); }

std::string TBancoSqlServer::Tipo(std::string_view firebird) const {
    return Traduz({{"blob sub_type 0", "image"},
                   {"blob sub_type 1", "ntext"},
                   {"varchar(8) character set octets", "varbinary(8)"},
                   {"varchar(20)", "nvarchar(20)"},
                   {"varchar(3)", "nvarchar(3)"},
                   {"char(20)", "nchar(20)"},
                   {"float", "real"},
                   {"boolean", "bit"},
                   {"timestamp", "datetime2(7)"}},
                  firebird);
}

bool TBancoSqlServer::Instalado() { return std::getenv("WKD_SQLSERVER") != nullptr; }

}  // namespace wkd
