#include "window/FMAtualiza.h"

#include <QCloseEvent>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QStackedWidget>
#include <QStyle>
#include <QTimer>
#include <QToolTip>
#include <QVBoxLayout>
#include <QWindow>
#include <algorithm>

#include "commands/Comandos.h"
#include "pages/PaginaAlias.h"
#include "pages/PaginaAtualizacao.h"
#include "pages/PaginaBackup.h"
#include "pages/PaginaOpcoes.h"
#include "process/Programa.h"
#include "report/Historico.h"
#include "values/Texto.h"
#include "widgets/Dialogos.h"
#include "widgets/EstiloAmetista.h"
#include "window/NovaVersao.h"
#include "window/TelaDaJanela.h"

namespace wkd {

namespace {

constexpr QSize kAreaCliente{683, 428};
constexpr const char* kRemembrados[] = {"edCaminhoBackup", "edServerRest", "edBancoRest", "url",
                                        "edRelatoriosBkp", "edAtualizacao"};

constexpr const char* kComBackup = "cbComBackup";

QWidget* FaixaColorida(const TTinta& tinta) {
    auto* faixa = new QWidget;
    Tinge(*faixa, tinta);
    faixa->setAutoFillBackground(true);
    return faixa;
}

}  // namespace

TFMAtualiza::TFMAtualiza(TDataModulo& daEntrada, const TMeios& meios, TInicio inicio)
    : meios_(meios), inicio_(std::move(inicio)), http_(new TClienteHttp(this)) {
    setObjectName("FMAtualiza");
    setWindowTitle("AtualizaWKD v" + Q(kVersao));
    setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                   Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
    dm_ = std::make_unique<TDataModulo>(daEntrada.SQLConnection1.Aliases(), meios_.tela);

    auto* partes = new QVBoxLayout(this);
    partes->setContentsMargins(0, 0, 0, 0);
    partes->setSpacing(0);
    partes->addWidget(Faixa());
    partes->addWidget(Paginas(), 1);
    partes->addWidget(Botoes());
    btProximo_->setDefault(true);
    Liga();
    Dimensiona();
}

/// The told size is that of the font it was drawn with; a larger one, or a screen reader's, makes the window grow.
/// Grown alike it holds every page; where the screen does not let it, the pages say how large it must be.
void TFMAtualiza::Dimensiona() {
    constexpr double kPontosDoDesenho = 9;
    const double vezes = std::max(1.0, QFontInfo(font()).pointSizeF() / kPontosDoDesenho);
    const QSize desenho = (QSizeF(kAreaCliente) * vezes).toSize();
    const QSize cabe = desenho.boundedTo(screen()->availableSize());
    if (cabe != desenho) Seguintes();
    const QSize antes = size();
    setFixedSize(cabe.expandedTo(minimumSizeHint()).expandedTo(kAreaCliente));
    if (mostrada_ && size() != antes) Centraliza();
}

TFMAtualiza::~TFMAtualiza() { alias_->disconnect(this); }

QWidget* TFMAtualiza::Faixa() {
    QWidget* faixa =
        FaixaColorida({{QPalette::Window, &TCores::ametista}, {QPalette::WindowText, &TCores::sobreAmetista}});
    faixa->setMinimumHeight(44);
    lblTitulo_ = Nomeia(new QLabel(Q(kTituloInicial)), "lblTitulo");
    QFont fonte = lblTitulo_->font();
    fonte.setPointSizeF(fonte.pointSizeF() * 1.35);
    fonte.setBold(true);
    lblTitulo_->setFont(fonte);
    lblNovaVersao_ = Nomeia(new QLabel, "lblNovaVersao");
    auto* linha = new QHBoxLayout(faixa);
    linha->setContentsMargins(14, 6, 14, 6);
    linha->addWidget(lblTitulo_, 1);
    linha->addWidget(lblNovaVersao_);
    return faixa;
}

QStackedWidget* TFMAtualiza::Paginas() {
    ntAtualiza_ = Nomeia(new QStackedWidget, "ntAtualiza");
    alias_ = new TPaginaAlias(
        [this](const auto& alias) { return UltimaEmTexto(UltimaExecucao(meios_.ambiente.pastaPrograma, alias)); });
    AcrescentaPagina(alias_);
    return ntAtualiza_;
}

void TFMAtualiza::AcrescentaPagina(QWidget* pagina) {
    pagina->setObjectName(Q(NomeDaPagina(static_cast<TPagina>(ntAtualiza_->count()))));
    pagina->layout()->setContentsMargins(14, 10, 14, 10);
    ntAtualiza_->addWidget(pagina);
}

TSeguintes& TFMAtualiza::Seguintes() {
    if (!seguintes_) FazSeguintes();
    return *seguintes_;
}

void TFMAtualiza::FazSeguintes() {
    const TAliases& aliases = dm_->SQLConnection1.Aliases();
    alias_->Completa();
    seguintes_ = {
        .backup = new TPaginaBackup(aliases, meios_.ambiente.pastaPrograma, meios_.dialogos, meios_.tela),
        .atualizacao = new TPaginaAtualizacao(meios_.dialogos),
        .opcoes =
            new TPaginaOpcoes([this](std::string_view tabela) { return dm_->ExisteTabela(tabela); }, meios_.dialogos),
        .status = new TPaginaStatus(meios_.dialogos),
        .ocupado = new TPainelOcupado(this),
    };
    for (QWidget* pagina : std::initializer_list<QWidget*>{seguintes_->backup, seguintes_->atualizacao,
                                                           seguintes_->opcoes, seguintes_->status})
        AcrescentaPagina(pagina);
    ntAtualiza_->updateGeometry();
    LigaSeguintes();
    RestauraPreferencias();
    Dimensiona();
    meios_.tela.Liga(*seguintes_->status, *seguintes_->ocupado);
    meios_.tela.LblAtual("Parado.");
    meios_.tela.Descarrega();
    if (!meios_.tela.Desassistida())
        VerificaNovaVersao(aliases, *http_, [this](const QString& versao) {
            lblNovaVersao_->setText("Versão " + versao + " disponível");
        });
}

QWidget* TFMAtualiza::Botoes() {
    QWidget* faixa = FaixaColorida({{QPalette::Window, &TCores::faixaDosBotoes}});
    faixa->setMinimumHeight(48);
    btLog_ = Botao("btLog", "&Log", "Abrir o log das atualizações");
    btVoltar_ = Botao("btVoltar", "&Voltar");
    btProximo_ = Botao("btProximo", "&Próximo");
    btSair_ = Botao("btSair", "&Sair");
    btVoltar_->setEnabled(false);
    auto* linha = new QHBoxLayout(faixa);
    linha->setContentsMargins(14, 8, 14, 8);
    linha->addStretch();
    for (QPushButton* botao : {btLog_, btVoltar_, btProximo_, btSair_}) {
        botao->setMinimumSize(92, 30);
        linha->addWidget(botao);
    }
    return faixa;
}

void TFMAtualiza::Liga() {
    connect(btSair_, &QPushButton::clicked, this, &TFMAtualiza::btSairClick);
    connect(btProximo_, &QPushButton::clicked, this, &TFMAtualiza::btProximoClick);
    connect(btVoltar_, &QPushButton::clicked, this, &TFMAtualiza::btVoltarClick);
    connect(btLog_, &QPushButton::clicked, this, &TFMAtualiza::btLogClick);
    connect(alias_, &TPaginaAlias::Escolhido, this, &TFMAtualiza::PreencheDados);
    connect(alias_, &TPaginaAlias::Liberar, this, &TFMAtualiza::LiberaUsuarios);
    connect(alias_, &TPaginaAlias::Novo, this, [this] { EditaAlias({}); });
    connect(alias_, &TPaginaAlias::Alterar, this, [this] { EditaAlias(S(alias_->Alias())); });
}

void TFMAtualiza::LigaSeguintes() {
    connect(seguintes_->status, &TPaginaStatus::Atualizar, this, &TFMAtualiza::btAtualizarClick);
    connect(seguintes_->status, &TPaginaStatus::Planejar, this, &TFMAtualiza::btPlanoClick);
    connect(seguintes_->status, &TPaginaStatus::Ensaiar, this, &TFMAtualiza::btEnsaioClick);
    connect(seguintes_->backup, &TPaginaBackup::FazerBackup, this, &TFMAtualiza::btExecutaBackupClick);
    connect(seguintes_->backup, &TPaginaBackup::Restaurar, this, &TFMAtualiza::btRestauraBackupClick);
    connect(seguintes_->status, &TPaginaStatus::VerificarIndices, this, &TFMAtualiza::Button1Click);
    connect(seguintes_->status, &TPaginaStatus::Log, this, &TFMAtualiza::btLogClick);
}

void TFMAtualiza::showEvent(QShowEvent* evento) {
    QDialog::showEvent(evento);
    if (mostrada_) return;
    mostrada_ = true;
    Centraliza();
    FormShow();
}

void TFMAtualiza::Centraliza() {
    move(QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, frameSize(), screen()->availableGeometry()).topLeft());
}

void TFMAtualiza::paintEvent(QPaintEvent* evento) {
    QDialog::paintEvent(evento);
    if (std::exchange(desenhada_, true)) return;
    QTimer::singleShot(0, this, &TFMAtualiza::Seguintes);
}

void TFMAtualiza::FormShow() {
    ListaAliases();
    alias_->setFocus();
    if (alias_->Vazia() && !meios_.tela.Desassistida()) QTimer::singleShot(0, this, [this] { EditaAlias({}); });
    // The window is drawn before a server is waited for.
    if (!inicio_.primeiro.empty()) QTimer::singleShot(0, this, &TFMAtualiza::LeArgumentos);
}

void TFMAtualiza::MostraErro(TErro erro) { meios_.tela.Erro(TErroDaExecucao::NaCaixa(std::move(erro))); }

void TFMAtualiza::LeArgumentos() {
    if (executando_) return QTimer::singleShot(TTelaDaJanela::kIntervalo, this, &TFMAtualiza::LeArgumentos);
    const std::size_t fim = inicio_.primeiro.find(';');
    if (fim == std::string::npos)
        aliasAtual_ = S(alias_->Alias());
    else
        AbreAliasPedido(inicio_.primeiro.substr(0, fim));
    if (Minusculas(inicio_.primeiro).find("nobkp") != std::string::npos) navegacao_.MostraBackup();
    if (inicio_.pacote && codigo_ == TCodigoDeSaida::Sucesso) {
        Seguintes().atualizacao->SetPacote(*inicio_.pacote);
        TOpcoes escolhidas;
        Escolhe(inicio_.escolhas, escolhidas);
        Seguintes().opcoes->Marca(escolhidas);
        btAtualizarClick();
        executada_ = true;
    }
    if (inicio_.pacote || codigo_ != TCodigoDeSaida::Sucesso) Termina();
}

/// A window that the system could not make, or that closes before it is drawn, does not end the program by itself.
void TFMAtualiza::Termina() {
    if (!windowHandle() || !windowHandle()->handle()) {
        QCloseEvent fim;
        closeEvent(&fim);
    } else if (isVisible()) {
        close();
    }
    QCoreApplication::exit();
}

TCodigoDeSaida TFMAtualiza::Codigo() const {
    const int sinal = TInterrupcao::Sinal();
    return executada_ || sinal == 0 ? codigo_ : CodigoDoSinal(sinal);
}

void TFMAtualiza::RestauraPreferencias() {
    for (const char* nome : kRemembrados) {
        const QString valor = meios_.preferencias.Le(nome);
        if (!valor.trimmed().isEmpty() && QString(nome).toLower() != "edatualizacao")
            findChild<QLineEdit*>(nome)->setText(valor);
    }
    Seguintes().status->SetComBackup(meios_.preferencias.Le(kComBackup) == "1" && !inicio_.pacote);
}

void TFMAtualiza::GravaPreferencias() {
    if (!seguintes_) return;  // they are as they were read
    for (const char* nome : kRemembrados) meios_.preferencias.Grava(nome, findChild<QLineEdit*>(nome)->text());
    if (!inicio_.pacote) meios_.preferencias.Grava(kComBackup, Seguintes().status->ComBackup() ? "1" : "0");
}

void TFMAtualiza::closeEvent(QCloseEvent* evento) {
    if (executando_) {
        QToolTip::showText(mapToGlobal(QPoint(width() / 2, height() / 2)),
                           "Há trabalho em andamento no banco. Espere o fim para fechar.", this);
        evento->ignore();
        return;
    }
    FormClose();
    if (inicio_.pacote && codigo_ == TCodigoDeSaida::Sucesso && meios_.tela.HouveErro())
        codigo_ = TCodigoDeSaida::ComErros;
    evento->accept();
}

void TFMAtualiza::FormClose() {
    alias_->disconnect(this);  // the focus leaves the list now, and no server is to be waited for
    GravaPreferencias();
    meios_.tela.SalvaLog();
}

void TFMAtualiza::reject() {
    if (btSair_->isEnabled()) btSairClick();
}

void TFMAtualiza::btSairClick() {
    if (executando_) return;
    if (meios_.dialogos.Confirmacao("Deseja sair do programa de atualização?")) close();
}

void TFMAtualiza::btLogClick() { AbrirLog(); }

void TFMAtualiza::AbrirLog() { meios_.dialogos.Abre(QCaminho(meios_.log.Caminho())); }

void TFMAtualiza::btProximoClick() {
    if (executando_) return;
    if (navegacao_.Pagina() == TPagina::Status) return btAtualizarClick();
    if (navegacao_.Pagina() == TPagina::Atualizacao && !PacoteExiste()) return;
    if (navegacao_.Pagina() == TPagina::Alias && !DeixaAlias()) return;
    MostraPagina(navegacao_.Proximo());
    btVoltar_->setEnabled(true);
    if (navegacao_.Pagina() == TPagina::Backup) {
        dm_->nomeAlias = S(alias_->Alias());
        Seguintes().backup->SetAlias(alias_->Alias());
    } else if (navegacao_.Pagina() == TPagina::Opcoes) {
        ReabreConexao();
    } else if (navegacao_.Pagina() == TPagina::Status) {
        Seguintes().status->OferecePlano();
        btProximo_->setText("Atualizar");
    }
}

/// Once: the list fills the page when the focus leaves it. False when there is nothing to go on with.
bool TFMAtualiza::DeixaAlias() {
    if (alias_->Alias().isEmpty()) {
        alias_->Explica("Escolha o alias na lista acima para seguir.");
        alias_->setFocus();
        return false;
    }
    btProximo_->setFocus();
    alias_->ConcluiSaida();
    if (!IgualSemCaixa(aliasAtual_, S(alias_->Alias()))) PreencheDados();
    return true;
}

void TFMAtualiza::btVoltarClick() {
    if (executando_) return;
    btProximo_->setEnabled(true);
    btProximo_->setText("&Próximo");
    MostraPagina(navegacao_.Volta());
    btVoltar_->setEnabled(navegacao_.Pagina() != TPagina::Alias);
}

void TFMAtualiza::MostraPagina(const TPasso& passo) {
    Seguintes();  // they may be asked for before the window is drawn
    ntAtualiza_->setCurrentIndex(static_cast<int>(passo.pagina));
    if (passo.titulo) lblTitulo_->setText(Q(*passo.titulo));
    QWidget* primeiro = ntAtualiza_->currentWidget()->focusProxy();
    (primeiro ? primeiro : btProximo_)->setFocus();
}

bool TFMAtualiza::PacoteExiste() {
    std::error_code semErro;
    if (std::filesystem::is_regular_file(Seguintes().atualizacao->Pacote(), semErro)) return true;
    meios_.tela.Informacao("Arquivo de atualização não foi encontrado");
    Seguintes().atualizacao->Corrige();
    return false;
}

}  // namespace wkd
