#include "commands/PreencheDados.h"

#include "ServidorDeBackup.h"
#include "Troca.h"
#include "run/TravaDoBanco.h"

namespace wkd {

namespace {

/// A restore that was cut off may have left the place of the database empty, or half filled.
void DizOndeEsta(THBNConnection& conexao, TDadosDoAlias& dados) {
    const bool foraDoLugar =
        dados.erro.find("No such file") != std::string::npos || dados.erro.find("shutdown") != std::string::npos;
    if (!foraDoLugar) return;
    try {
        for (const auto& linha : RestosDeBackup(conexao)) dados.erro += "\n" + linha;
    } catch (const std::exception&) {  // the first error tells the cause
    }
}

/// What a server's restore has not finished opens like a whole database, for one.
void RecusaPedaco(THBNConnection& conexao, TDadosDoAlias& dados) {
    if (conexao.ArquivoLocal() || !FechadoParaUm(conexao)) return;
    conexao.Close();
    dados.erro = LugarFechado(conexao);
}

void Abre(TDataModulo& dm, const std::string& alias, TDadosDoAlias& dados) {
    try {
        dm.nomeAlias = alias;
        dm.SQLConnection1.SetAlias(alias);
        dm.SQLConnection1.Open();
        RecusaPedaco(dm.SQLConnection1, dados);
    } catch (const std::exception& erro) {
        dados.erro = erro.what();
        DizOndeEsta(dm.SQLConnection1, dados);
    }
}

/// The embedded engine says only that somebody has the file.
void DizQuemAtualiza(TDataModulo& dm, TDadosDoAlias& dados) {
    const auto quem = dm.SQLConnection1.Connected() ? std::nullopt : QuemAtualiza(dm.SQLConnection1);
    if (!quem) return;
    dados.outraAtualizacao = true;
    dados.erro = TOutraAtualizacao(*quem).what();
}

/// False in a database of the older generation. Users that cannot be read look like none of them, and mean nothing.
bool ListaUsuarios(TConnection& conexao, TDadosDoAlias& dados) {
    dados.numUsuarios = "-1 (Versão HBN3)";
    try {
        const auto total = ContaUsuariosOnline(conexao);
        auto usuarios = total ? ListaUsuariosOnline(conexao) : std::nullopt;
        if (!usuarios) return false;
        dados.numUsuarios = std::to_string(*total);
        dados.usuarios = std::move(*usuarios);
        dados.usuariosOnline = true;
    } catch (const std::exception&) {
    }
    return true;
}

}  // namespace

TDadosDoAlias PreencheDados(TDataModulo& dm, TEstado& estado, const std::string& alias) {
    TDadosDoAlias dados;
    dm.SQLConnection1.Close();
    if (alias.empty()) return dados;
    Abre(dm, alias, dados);
    estado.usuariosOnline = ListaUsuarios(dm.SQLConnection1, dados);
    try {
        DizQuemAtualiza(dm, dados);
        dados.caminhoBanco = dm.SQLConnection1.RetornaDadosConexao().Texto();
    } catch (const TErroConfiguracao& erro) {
        if (dados.erro.empty()) dados.erro = erro.what();
    }
    return dados;
}

}  // namespace wkd
