#include "LojaSqlServer.h"

#include <fstream>

#include "odbc/LexicoSql.h"
#include "values/Texto.h"

namespace wkd {
namespace {

std::string EmTSql(std::string comando) {
    const bool define = comando.starts_with("create table");
    constexpr std::pair<const char*, const char*> kTipos[] = {
        {"blob sub_type 0 segment size 80", "image"},
        {"timestamp", "datetime"},
        {"double precision", "float"},
        {" date,", " datetime,"},
        {"varchar", "nvarchar"},
    };
    if (define)
        for (const auto& [firebird, sqlServer] : kTipos) comando = Troca(comando, firebird, sqlServer);
    return comando;
}

/// Runs an INSERT with its texts as parameters: an image takes no literal everywhere.
void Insere(TConnection& conexao, std::string_view comando) {
    std::string texto;
    std::vector<std::string> valores;
    bool anteriorTexto = false;  // "'it''s'" comes in two pieces
    for (const auto& lexema : Lexemas(comando)) {
        const bool ehTexto = lexema.classe == TLexema::TClasse::Texto;
        const auto dentro = ehTexto ? lexema.texto.substr(1, lexema.texto.size() - 2) : "";
        if (ehTexto && anteriorTexto)
            valores.back().append("'").append(dentro);
        else if (ehTexto)
            valores.emplace_back(dentro);
        if (!ehTexto) texto += lexema.texto;
        if (ehTexto && !anteriorTexto) texto += ":p" + std::to_string(valores.size());
        anteriorTexto = ehTexto;
    }
    const auto insere = conexao.Prepara(texto);
    for (std::size_t i = 0; i < valores.size(); ++i) insere->Atribui(i, valores[i]);
    insere->Executa();
}

}  // namespace

std::vector<std::string> ComandosDaLoja(const std::filesystem::path& script, bool sqlServer) {
    std::vector<std::string> comandos;
    std::ifstream arquivo(script);
    std::string comando, linha;
    while (std::getline(arquivo, linha)) {
        if (linha.starts_with("--")) continue;
        comando += linha + "\n";
        if (!linha.ends_with(';')) continue;
        comando = Apara(std::string_view(comando).substr(0, comando.size() - 2));
        const bool doIsql = comando.starts_with("set sql") || comando.starts_with("commit");
        if (!doIsql) comandos.push_back(sqlServer ? EmTSql(comando) : comando);
        comando.clear();
    }
    return comandos;
}

TAlias AliasDoSqlServer(std::string nome) {
    const auto parametros = TBancoSqlServer::Parametros();
    TAlias alias;
    alias.nome = std::move(nome);
    alias.tipoBanco = "tbSQLServer";
    alias.hostname = parametros.Valor("Server");
    alias.database = parametros.Valor("Database");
    alias.usuario = parametros.Valor("User_Name");
    alias.senha = parametros.Valor("Password");
    alias.driver = parametros.Valor("Driver");
    return alias;
}

TLojaSqlServer::TLojaSqlServer(const std::filesystem::path& script) : modulo_(GravaAlias(pasta_ / "WKD.ini"), tela_) {
    for (const auto& comando : ComandosDaLoja(script, true)) {
        if (comando.starts_with("insert"))
            Insere(banco_.Conexao(), comando);
        else
            banco_.Conexao().ExecuteDirect(comando);
    }
    modulo_.SQLConnection1.SetAlias("LOJA");
    modulo_.SQLConnection1.Open();
    modulo_.AtualizaListaDeTabelas();
}

TAliases TLojaSqlServer::GravaAlias(const std::filesystem::path& ini) {
    const TAliases aliases(ini);
    aliases.AdicionaAlias(AliasDoSqlServer("LOJA"), false);
    return aliases;
}

}  // namespace wkd
