#include "BancoDeExemplo.h"

#include <fstream>

#include "BancoTemporario.h"
#include "firebird/ConexaoFirebird.h"

namespace wkd {

namespace fs = std::filesystem;

namespace {

/// Runs the statements of a script that end with ";" at a line's end.
void ExecutaScript(TConnection& conexao, const fs::path& arquivo) {
    std::ifstream script(arquivo);
    std::string comando, linha;
    while (std::getline(script, linha)) {
        if (linha.starts_with("--")) continue;
        comando += linha + "\n";
        if (!linha.ends_with(';')) continue;
        comando.resize(comando.size() - 2);
        const bool doIsql = comando.starts_with("set sql") || comando.starts_with("commit");
        if (!doIsql && comando.starts_with("create")) {
            if (conexao.InTransaction()) conexao.Commit();
            conexao.ExecuteDirect(comando);
        } else if (!doIsql) {
            if (!conexao.InTransaction()) conexao.StartTransaction();
            conexao.Prepara(comando)->Executa();
        }
        comando.clear();
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
    return "[" + alias + "]\nAlias=" + alias + "\nTipoBanco=tbInterbase\nHostname=\nPath=" + pasta.string() +
           "/\nDataBase=" + banco + "\nUser_Name=SYSDBA\nPassword=\nTipoAutenticacao=0\n";
}

}  // namespace wkd
