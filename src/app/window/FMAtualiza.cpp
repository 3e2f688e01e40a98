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
    const TAliases& aliases = daEntrada.SQLConnection1.Aliases();
    setObjectName("FMAtualiza");
    setWindowTitle("AtualizaWKD v" + Q(kVersao));
    setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                   Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
    dm_ = std::make_unique<TDataModulo>(aliases, meios_.tela);

    auto* partes = new QVBoxLayout(this);
    partes->setContentsMargins(0, 0, 0, 0);
    partes->setSpacing(0);
    partes->addWidget(Faixa());
    partes->addWidget(Paginas(), 1);
    partes->addWidget(Botoes());
    btProximo_->setDefault(true);
    Liga();
    Dimensiona();
    ocupado_ = new TPainelOcupado(this);
    meios_.tela.Liga(*status_, *ocupado_);

    if (!meios_.tela.Desassistida())
        VerificaNovaVersao(aliases, *http_, [this](const QString& versao) {
            lblNovaVersao_->setText("Versão " + versao + " disponível");
        });
}

/// The told size is that of the font it was drawn with; a larger one, or a screen reader's, makes the window grow.
void TFMAtualiza::Dimensiona() {
    constexpr double kPontosDoDesenho = 9;
    const double vezes = std::max(1.0, QFontInfo(font()).pointSizeF() / kPontosDoDesenho);
    const QSize desenho = (QSizeF(kAreaCliente) * vezes).toSize().boundedTo(screen()->availableSize());
    setFixedSize(desenho.expandedTo(minimumSizeHint()).expandedTo(kAreaCliente));
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
    const TAliases& aliases = dm_->SQLConnection1.Aliases();
    ntAtualiza_ = Nomeia(new QStackedWidget, "ntAtualiza");
    alias_ = new TPaginaAlias(
        [this](const auto& alias) { return UltimaEmTexto(UltimaExecucao(meios_.ambiente.pastaPrograma, alias)); });
    backup_ = new TPaginaBackup(aliases, meios_.ambiente.pastaPrograma, meios_.dialogos, meios_.tela);
    atualizacao_ = new TPaginaAtualizacao(meios_.dialogos);
    opcoes_ = new TPaginaOpcoes([this](std::string_view tabela) { return dm_->ExisteTabela(tabela); }, meios_.dialogos);
    status_ = new TPaginaStatus(meios_.dialogos);
    for (QWidget* pagina : std::initializer_list<QWidget*>{alias_, backup_, atualizacao_, opcoes_, status_}) {
        pagina->setObjectName(Q(NomeDaPagina(static_cast<TPagina>(ntAtualiza_->count()))));
        pagina->layout()->setContentsMargins(14, 10, 14, 10);
        ntAtualiza_->addWidget(pagina);
    }
    return ntAtualiza_;
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
    connect(status_, &TPaginaStatus::Atualizar, this, &TFMAtualiza::btAtualizarClick);
    connect(status_, &TPaginaStatus::Planejar, this, &TFMAtualiza::btPlanoClick);
    connect(status_, &TPaginaStatus::Ensaiar, this, &TFMAtualiza::btEnsaioClick);
    connect(backup_, &TPaginaBackup::FazerBackup, this, &TFMAtualiza::btExecutaBackupClick);
    connect(backup_, &TPaginaBackup::Restaurar, this, &TFMAtualiza::btRestauraBackupClick);
    connect(status_, &TPaginaStatus::VerificarIndices, this, &TFMAtualiza::Button1Click);
    connect(status_, &TPaginaStatus::Log, this, &TFMAtualiza::btLogClick);
}

void TFMAtualiza::showEvent(QShowEvent* evento) {
    QDialog::showEvent(evento);
    if (mostrada_) return;
    mostrada_ = true;
    move(QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, frameSize(), screen()->availableGeometry()).topLeft());
    FormShow();
}

void TFMAtualiza::FormShow() {
    ListaAliases();
    meios_.tela.LblAtual("Parado.");
    RestauraPreferencias();
    meios_.tela.Descarrega();
    ntAtualiza_->setCurrentIndex(0);
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
        atualizacao_->SetPacote(*inicio_.pacote);
        TOpcoes escolhidas;
        Escolhe(inicio_.escolhas, escolhidas);
        opcoes_->Marca(escolhidas);
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
    status_->SetComBackup(meios_.preferencias.Le(kComBackup) == "1" && !inicio_.pacote);
}

void TFMAtualiza::GravaPreferencias() {
    for (const char* nome : kRemembrados) meios_.preferencias.Grava(nome, findChild<QLineEdit*>(nome)->text());
    if (!inicio_.pacote) meios_.preferencias.Grava(kComBackup, status_->ComBackup() ? "1" : "0");
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
        backup_->SetAlias(alias_->Alias());
    } else if (navegacao_.Pagina() == TPagina::Opcoes) {
        ReabreConexao();
    } else if (navegacao_.Pagina() == TPagina::Status) {
        status_->OferecePlano();
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

}  // namespace wkd
