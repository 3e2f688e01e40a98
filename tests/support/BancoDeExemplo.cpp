#include "BancoDeExemplo.h"

#include "BancoTemporario.h"
#include "LojaSqlServer.h"
#include "firebird/ConexaoFirebird.h"

namespace wkd {

namespace fs = std::filesystem;

namespace {

void ExecutaScript(TConnection& conexao, const fs::path& script) {
    for (const std::string& comando : ComandosDaLoja(script, false)) {
        if (comando.starts_with("create")) {
            if (conexao.InTransaction()) conexao.Commit();
            conexao.ExecuteDirect(comando);
        } else {
            if (!conexao.InTransaction()) conexao.StartTransaction();
            conexao.Prepara(comando)->Executa();
        }
    }
    if (conexao.InTransaction()) conexao.Commit();
}

}  // namespace

const fs::path& BancoDeExemplo() {
    static const TPastaTemporaria pasta;
    static const fs::path arquivo = [] {
        TParametrosConexao parametros = ParametrosFirebird(pasta / "loja.fdb");
        parametros.Adiciona("CharacterSet", "WIN1252");
        parametros.Adiciona("ForcedWrites", "False");
        CriaBancoFirebird(parametros, 8192);
        const auto conexao = CriaConexaoFirebird(parametros);
        conexao->Open();
        ExecutaScript(*conexao, fs::path(WKD_EXEMPLOS) / "banco.sql");
        return pasta / "loja.fdb";
    }();
    return arquivo;
}

std::string SecaoDoAlias(const std::string& alias, const fs::path& pasta, const std::string& banco) {
    const std::string servidor = ServidorDosTestes();
    return "[" + alias + "]\nAlias=" + alias + "\nTipoBanco=tbInterbase\nHostname=" + servidor +
           "\nPath=" + pasta.string() + "/\nDataBase=" + banco +
           "\nUser_Name=SYSDBA\nPassword=" + (servidor.empty() ? "" : "masterkey") + "\nTipoAutenticacao=0\n";
}

}  // namespace wkd
