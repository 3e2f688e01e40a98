// The way through the pages, and what the window does on arrival.

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>

#include "FMAtualiza.h"
#include "PaginaAlias.h"
#include "PaginaAtualizacao.h"
#include "PaginaBackup.h"
#include "PaginaOpcoes.h"
#include "PreencheDados.h"
#include "SegundoPlano.h"
#include "Texto.h"
#include "TextoQt.h"
#include "Vigia.h"

namespace wkd {

namespace {

constexpr std::string_view kSemConexao =
    "Não foi possível convetar ao banco, favor informar um alias válido ou verifique as configurações do mesmo";

}  // namespace

/// Asks a server: the pointer tells of waiting, the window is drawn, and what is typed or clicked meanwhile is dropped.
void TFMAtualiza::Espera(const std::function<void()>& pedido) {
    QApplication::setOverrideCursor(Qt::WaitCursor);
    executando_ = true;
    const auto restaura = qScopeGuard([this] {
        executando_ = false;
        QApplication::restoreOverrideCursor();
    });
    const TVigia vigia = Vigia(aliasAtual_);
    AteOFim([&] { EmSegundoPlano(pedido, TEntrada::Descarta); });
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
    Espera([&] { dados = wkd::PreencheDados(*dm_, estado_, alias); });
    if (!alias.empty()) alias_->Mostra(dados);
    return dados;
}

void TFMAtualiza::AbreAliasPedido(const std::string& nome) {
    aliasAtual_ = nome;
    alias_->Escolhe(Q(nome));
    const TDadosDoAlias dados = Preenche(nome);
    if (dm_->SQLConnection1.Connected() || TInterrupcao::Sinal() != 0) return;
    codigo_ = dados.outraAtualizacao ? TCodigoDeSaida::Encerrada : TCodigoDeSaida::SemConexao;
    meios_.tela.Informacao(kSemConexao);
    if (meios_.tela.Desassistida() && !dados.erro.empty()) meios_.tela.Informacao(dados.erro);
}

void TFMAtualiza::btProximoClick() {
    if (executando_) return;
    if (navegacao_.Pagina() == TPagina::Status) return btAtualizarClick();
    if (navegacao_.Pagina() == TPagina::Atualizacao && !PacoteExiste()) return;
    if (navegacao_.Pagina() == TPagina::Alias) DeixaAlias();
    MostraPagina(navegacao_.Proximo());
    btVoltar_->setEnabled(true);
    if (navegacao_.Pagina() == TPagina::Backup) {
        dm_->nomeAlias = S(alias_->Alias());
        backup_->SetAlias(alias_->Alias());
    } else if (navegacao_.Pagina() == TPagina::Opcoes) {
        ReabreConexao();
    } else if (navegacao_.Pagina() == TPagina::Status) {
        status_->OferecePlano();
        btProximo_->setText("Atualizar");
    }
}

/// Once: the list fills the page when the focus leaves it.
void TFMAtualiza::DeixaAlias() {
    btProximo_->setFocus();
    if (!IgualSemCaixa(aliasAtual_, S(alias_->Alias()))) PreencheDados();
}

void TFMAtualiza::btVoltarClick() {
    if (executando_) return;
    btProximo_->setEnabled(true);
    btProximo_->setText("&Próximo");
    MostraPagina(navegacao_.Volta());
    btVoltar_->setEnabled(navegacao_.Pagina() != TPagina::Alias);
}

void TFMAtualiza::MostraPagina(const TPasso& passo) {
    ntAtualiza_->setCurrentIndex(static_cast<int>(passo.pagina));
    if (passo.titulo) lblTitulo_->setText(Q(*passo.titulo));
    QWidget* primeiro = ntAtualiza_->currentWidget()->focusProxy();
    (primeiro ? primeiro : btProximo_)->setFocus();
}

bool TFMAtualiza::PacoteExiste() {
    std::error_code semErro;
    if (std::filesystem::is_regular_file(atualizacao_->Pacote(), semErro)) return true;
    meios_.tela.Informacao("Arquivo de atualização não foi encontrado");
    atualizacao_->Corrige();
    return false;
}

/// The options page offers the tables as they are now.
void TFMAtualiza::ReabreConexao() {
    opcoes_->Oferece({});
    try {
        Espera([this] {
            dm_->SQLConnection1.Close();
            dm_->SQLConnection1.Open();
            dm_->AtualizaListaDeTabelas();
        });
        opcoes_->Oferece(dm_->ListaDeTabelas());
    } catch (const std::exception& erro) {
        meios_.tela.Informacao(erro.what());
    }
}

}  // namespace wkd
