#include "commands/PreencheDados.h"

#include <algorithm>
#include <iterator>

#include "ServidorDeBackup.h"
#include "Troca.h"
#include "package/TravaDoBanco.h"
#include "report/RelatorioDaExecucao.h"

namespace wkd {

namespace {

/// A restore that was cut off may have left the place of the database empty, or half filled.
void DizOndeEsta(THBNConnection& conexao, TErro& erro) {
    if (erro.falha != TFalha::BancoInexistente && erro.falha != TFalha::BancoFechado) return;
    try {
        for (const auto& linha : RestosDeBackup(conexao)) erro.mensagem += "\n" + linha;
    } catch (const std::exception&) {  // the first error tells the cause
    }
}

/// What a server's restore has not finished opens like a whole database, for one.
void RecusaPedaco(THBNConnection& conexao) {
    if (conexao.ArquivoLocal() || !CriaServidorDeBackup(conexao)->FechadoParaUm(conexao)) return;
    conexao.Close();
    throw TErroConhecido(TFalha::Impedimento, LugarFechado(conexao));
}

void Abre(TDataModulo& dm, const std::string& alias, TDadosDoAlias& dados) {
    try {
        dm.nomeAlias = alias;
        dm.SQLConnection1.SetAlias(alias);
        dm.SQLConnection1.Open();
        RecusaPedaco(dm.SQLConnection1);
    } catch (const std::exception& erro) {
        dados.erro = ErroDe(erro);
        DizOndeEsta(dm.SQLConnection1, *dados.erro);
    }
}

/// The embedded engine says only that somebody has the file.
void DizQuemAtualiza(TDataModulo& dm, TDadosDoAlias& dados) {
    const auto quem = dm.SQLConnection1.Connected() ? std::nullopt : QuemAtualiza(dm.SQLConnection1);
    if (quem) dados.erro = TOutraAtualizacao(*quem).Dados();
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
    } catch (const std::exception& erro) {
        if (!dados.erro) dados.erro = ErroDe(erro);
    }
    return true;
}

struct TCausa {
    TFalha falha;
    std::string_view texto;
};

/// Where the error itself says all, there is none.
constexpr TCausa kCausas[] = {
    {TFalha::Conexao, "O servidor não respondeu."},
    {TFalha::ServidorDesconhecido, "A rede não conhece um servidor com esse nome."},
    {TFalha::BancoInexistente, "O banco de dados não foi encontrado nesse lugar, ou o servidor não pode abri-lo."},
    {TFalha::BancoNegado, "O arquivo do banco, ou o acesso do usuário a ele, está sem permissão."},
    {TFalha::AcessoRemoto, "A configuração do servidor não deixa abrir esse banco daqui."},
    {TFalha::NaoEBanco, "O arquivo não é um banco de dados, ou não é da versão deste servidor."},
    {TFalha::BancoFechado, "O banco de dados está fechado."},
    {TFalha::SemDriver, "Falta neste computador o que fala com esse tipo de servidor."},
    {TFalha::Autenticacao, "O servidor recusou o usuário ou a senha."},
    {TFalha::SemPermissao, "O usuário do alias não tem direito a isso no banco."},
    {TFalha::EmUso, "O banco de dados está em uso por outro programa."},
    {TFalha::DiscoCheio, "O disco encheu."},
    {TFalha::Outra, "O banco de dados não pôde ser aberto."},
};

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
        if (!dados.erro) dados.erro = erro.Dados();
    }
    return dados;
}

void ListaConectados(THBNConnection& conexao, TDadosDoAlias& dados) {
    dados.conectado = conexao.Connected();
    if (!dados.conectado) return;
    try {
        dados.conectados = Conectados(conexao);
    } catch (const std::exception& erro) {
        dados.semConectados = erro.what();
    }
}

std::string ExplicaConexao(const TErro& erro) {
    const auto* causa = std::ranges::find(kCausas, erro.falha, &TCausa::falha);
    if (causa == std::end(kCausas)) return erro.mensagem;
    return std::string(causa->texto) + " " + std::string(Providencia(erro.falha)) + "\n" + erro.mensagem;
}

}  // namespace wkd
