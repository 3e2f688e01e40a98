#include "PreencheDados.h"

#include "TravaDoBanco.h"

namespace wkd {

namespace {

void Abre(TDataModulo& dm, const std::string& alias, TDadosDoAlias& dados) {
    try {
        dm.nomeAlias = alias;
        dm.SQLConnection1.SetAlias(alias);
        dm.SQLConnection1.Open();
    } catch (const std::exception& erro) {
        dados.erro = erro.what();
    }
}

/// The embedded engine says only that somebody has the file.
void DizQuemAtualiza(TDataModulo& dm, TDadosDoAlias& dados) {
    const auto quem = dm.SQLConnection1.Connected() ? std::nullopt : QuemAtualiza(dm.SQLConnection1);
    if (!quem) return;
    dados.outraAtualizacao = true;
    dados.erro = TOutraAtualizacao(*quem).what();
}

}  // namespace

TDadosDoAlias PreencheDados(TDataModulo& dm, TEstado& estado, const std::string& alias) {
    TDadosDoAlias dados;
    dm.SQLConnection1.Close();
    if (alias.empty()) return dados;
    Abre(dm, alias, dados);
    try {
        dados.numUsuarios = std::to_string(ContaUsuariosOnline(dm.SQLConnection1));
        dados.usuarios = ListaUsuariosOnline(dm.SQLConnection1);
        dados.usuariosOnline = true;
    } catch (const std::exception&) {
        dados.numUsuarios = "-1 (Versão HBN3)";
    }
    estado.usuariosOnline = dados.usuariosOnline;
    try {
        DizQuemAtualiza(dm, dados);
        dados.caminhoBanco = dm.SQLConnection1.RetornaDadosConexao().Texto();
    } catch (const TErroConfiguracao& erro) {
        if (dados.erro.empty()) dados.erro = erro.what();
    }
    return dados;
}

}  // namespace wkd
