#include <QApplication>
#include <QTimer>
#include <chrono>
#include <future>

#include "commands/Comandos.h"
#include "pages/PaginaAlias.h"
#include "pages/PaginaOpcoes.h"
#include "process/Programa.h"
#include "server/Vigia.h"
#include "values/Texto.h"
#include "widgets/Dialogos.h"
#include "widgets/SegundoPlano.h"
#include "window/DialogoDeAlias.h"
#include "window/FMAtualiza.h"
#include "window/TelaDaJanela.h"

namespace wkd {

namespace {

constexpr std::string_view kSemConexao =
    "Não foi possível convetar ao banco, favor informar um alias válido ou verifique as configurações do mesmo";
constexpr std::string_view kCancelada = "A conexão foi cancelada. Para tentar de novo, escolha o alias outra vez.";

}  // namespace

void TFMAtualiza::ListaAliases() {
    const THBNConnection& conexao = dm_->SQLConnection1;
    alias_->Lista(conexao.Aliases().ListaAlias(true), Q(conexao.GetIniPath()));
}

/// With an empty name a new one is made.
void TFMAtualiza::EditaAlias(const std::string& nome) {
    if (executando_) return;
    try {
        TDialogoDeAlias dialogo(dm_->SQLConnection1.Aliases(), meios_.dialogos, nome, this);
        if (dialogo.exec() != QDialog::Accepted) return;
        ListaAliases();
        alias_->Escolhe(dialogo.Nome());
        PreencheDados();
    } catch (const std::exception& erro) {
        MostraErro(ErroDe(erro));
    }
}

QString TFMAtualiza::Conectando() const {
    const std::string servidor = dm_->SQLConnection1.Aliases().INILeString(aliasAtual_, "Hostname");
    return Q("Conectando a " + aliasAtual_ + (servidor.empty() ? "" : " (" + servidor + ")") + "...");
}

/// Asks a server: a box says so and lets it be given up, and what is typed or clicked beside it is dropped.
void TFMAtualiza::Espera(const QString& texto, const std::function<void()>& pedido) {
    constexpr std::chrono::milliseconds kAntesDaCaixa{150};  // a box that only flashes up would disturb
    THBNConnection& conexao = dm_->SQLConnection1;
    std::future<void> corte;
    QTimer mostra;
    mostra.setSingleShot(true);
    connect(&mostra, &QTimer::timeout, this, [&] { Seguintes().ocupado->Mostra(texto, -1); });
    Seguintes().ocupado->OfereceCancelar([&] {
        desistiu_ = true;
        corte = std::async(std::launch::async, [&] { conexao.Cancela(); });  // what follows the opening
    });
    desistiu_ = false;
    executando_ = true;
    conexao.PermiteDesistir([this] { return desistiu_.load(); });
    QApplication::setOverrideCursor(Qt::BusyCursor);
    const auto restaura = qScopeGuard([&] {
        QApplication::restoreOverrideCursor();
        conexao.PermiteDesistir({});
        executando_ = false;
        Seguintes().ocupado->hide();
        Seguintes().ocupado->OfereceCancelar({});
    });
    mostra.start(kAntesDaCaixa);
    const TVigia vigia = Vigia(aliasAtual_);
    AteOFim([&] { EmSegundoPlano(pedido, TEntrada::Descarta, &Seguintes().ocupado->Cancelar()); });
    if (!desistiu_) return;
    if (corte.valid()) corte.wait();
    conexao.Close();
    throw TErroBanco({.mensagem = std::string(kCancelada), .falha = TFalha::Interrompida});
}

void TFMAtualiza::PreencheDados() {
    if (executando_) return;
    alias_->EscondeUsuarios();
    const std::string escolhido = S(alias_->Alias());
    if (!IgualSemCaixa(aliasAtual_, escolhido)) aliasAtual_ = escolhido;
    Preenche(aliasAtual_);
}

TDadosDoAlias TFMAtualiza::Preenche(const std::string& alias) {
    TDadosDoAlias dados;
    try {
        Espera(Conectando(), [&] {
            dados = wkd::PreencheDados(*dm_, estado_, alias);
            if (!meios_.tela.Desassistida()) ListaConectados(dm_->SQLConnection1, dados);
        });
    } catch (const TErroBanco& cancelada) {
        dados.numUsuarios = "-1 (Versão HBN3)";
        dados.usuariosOnline = false;
        dados.erro = cancelada.Dados();
    }
    if (!alias.empty()) alias_->Mostra(dados);
    return dados;
}

/// Users that a crash left with the mark of being connected.
void TFMAtualiza::LiberaUsuarios() {
    const auto usuarios = alias_->UsuariosEscolhidos();
    if (executando_ || usuarios.empty()) return;
    std::vector<std::string> nomes;
    std::vector<TValor> codigos;
    for (const auto& usuario : usuarios) {
        nomes.push_back(usuario.nomeCompleto);
        codigos.push_back(usuario.codigo);
    }
    const auto conexoes = alias_->Mostrado().conectados.size();
    const std::string ainda =
        conexoes == 0 ? ""
                      : "\nAtenção: o servidor conhece outras conexões ao banco (" + std::to_string(conexoes) + ").";
    if (!meios_.dialogos.Confirmacao(Q("Tirar a marca de conectado de " + Junta(nomes, ", ") +
                                       "?\nFaça isso só com quem não está mais no sistema, por exemplo depois de uma "
                                       "queda: a atualização não esperará por eles." +
                                       ainda)))
        return;
    try {
        Espera("Liberando os usuários...", [&] { wkd::LiberaUsuarios(dm_->SQLConnection1, codigos); });
        PreencheDados();
    } catch (const std::exception& erro) {
        MostraErro(ErroDe(erro));
    }
}

void TFMAtualiza::AbreAliasPedido(const std::string& nome) {
    aliasAtual_ = nome;
    alias_->Escolhe(Q(nome));
    const TDadosDoAlias dados = Preenche(nome);
    if (dm_->SQLConnection1.Connected() || TInterrupcao::Sinal() != 0) return;
    codigo_ = CodigoSemConexao(dados);
    meios_.tela.Informacao(kSemConexao);
    if (meios_.tela.Desassistida() && dados.erro) meios_.tela.Informacao(ExplicaConexao(*dados.erro));
}

/// The options page offers the tables as they are now.
void TFMAtualiza::ReabreConexao() {
    Seguintes().opcoes->Oferece({});
    try {
        Espera(Conectando(), [this] {
            dm_->SQLConnection1.Close();
            dm_->SQLConnection1.Open();
            dm_->AtualizaListaDeTabelas();
        });
        Seguintes().opcoes->Oferece(dm_->ListaDeTabelas());
    } catch (const std::exception& erro) {
        TErro semConexao = ErroDe(erro);
        semConexao.mensagem = ExplicaConexao(semConexao);
        MostraErro(std::move(semConexao));
    }
}

}  // namespace wkd
