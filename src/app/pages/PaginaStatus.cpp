#include "pages/PaginaStatus.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QProgressBar>
#include <QScrollBar>
#include <QTextBlock>
#include <QVBoxLayout>
#include <algorithm>

#include "pages/PaginaOpcoes.h"
#include "widgets/Dialogos.h"
#include "widgets/EstiloAmetista.h"

namespace wkd {

TMemoDeLinhas::TMemoDeLinhas(QWidget* pai) : QPlainTextEdit(pai) {
    setReadOnly(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    setUndoRedoEnabled(false);
    setTabChangesFocus(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
}

void TMemoDeLinhas::Acrescenta(const QStringList& linhas) {
    if (linhas.isEmpty()) return;
    appendPlainText(linhas.join('\n'));
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

TPainelOcupado::TPainelOcupado(QWidget* janela)
    : QFrame(janela),
      texto_(new QLabel),
      barra_(Nomeia(new QProgressBar, "pbOcupado", "Andamento")),
      cancelar_(Botao("btCancelar", "Cancelar", "Parar sem deixar nada")) {
    setObjectName("pnOcupado");
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    texto_->setTextFormat(Qt::PlainText);
    texto_->setAlignment(Qt::AlignCenter);
    texto_->setWordWrap(true);
    auto* linhas = new QVBoxLayout(this);
    linhas->setContentsMargins(24, 16, 24, 16);
    linhas->addWidget(texto_);
    linhas->addWidget(barra_);
    linhas->addWidget(cancelar_, 0, Qt::AlignCenter);
    cancelar_->hide();
    cancelar_->setAutoDefault(false);
    connect(cancelar_, &QPushButton::clicked, this, [this] {
        cancelar_->setEnabled(false);
        if (cancela_) cancela_();
    });
    setFixedWidth(std::max(320, 46 * fontMetrics().averageCharWidth()));
    hide();
}

void TPainelOcupado::OfereceCancelar(std::function<void()> cancela) {
    cancela_ = std::move(cancela);
    cancelar_->setVisible(static_cast<bool>(cancela_));
    cancelar_->setEnabled(true);
}

void TPainelOcupado::Mostra(const QString& texto, int percentual) {
    texto_->setText(texto);
    setAccessibleName(texto);
    barra_->setRange(0, percentual < 0 ? 0 : 100);
    barra_->setValue(percentual);
    adjustSize();
    move((parentWidget()->width() - width()) / 2, (parentWidget()->height() - height()) / 2);
    show();
    raise();
}

namespace {

QLabel* RotuloDeAndamento(const char* nome, const QString& texto) {
    auto* rotulo = Nomeia(new QLabel(texto), nome);
    rotulo->setTextFormat(Qt::PlainText);
    rotulo->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);  // a long name does not widen the window
    return rotulo;
}

QProgressBar* Barra(const char* nome, const QString& lida) {
    auto* barra = Nomeia(new QProgressBar, nome, lida);
    barra->setValue(0);
    return barra;
}

}  // namespace

TPaginaStatus::TPaginaStatus(IDialogos& dialogos)
    : dialogos_(dialogos),
      memo1_(Nomeia(new TMemoDeLinhas, "Memo1", "Status da Atualização")),
      memo2_(Nomeia(new TMemoDeLinhas, "Memo2", "Erros")),
      memoLog_(Nomeia(new QPlainTextEdit, "MemoLog", "Log")),
      pastas_(Nomeia(new TListaDePastas, "DirectoryListBox1", "Pasta do pacote")),
      btPlano_(Botao("btPlano", "Pla&no", "Mostra o que a atualização faria, sem mudar nada")),
      btEnsaio_(Botao("btEnsaio", "&Ensaio", "Faz a atualização numa cópia do banco e diz se ele pode ser atualizado")),
      cbComBackup_(Nomeia(new QCheckBox("&Backup provado antes"), "cbComBackup")),
      lblAtual_(RotuloDeAndamento("lblAtual", "Atual")),
      lblGeral_(RotuloDeAndamento("lblGeral", "Geral.")),
      lblEstimativa_(RotuloDeAndamento("lblEstimativa", "")),
      lblVeredicto_(RotuloDeAndamento("lblVeredicto", "")),
      lblProvidencia_(Nomeia(new QLabel, "lblProvidencia")),
      btRelatorio_(Botao("btRelatorio", "Relatório", "Abrir o relatório desta atualização")),
      pbAtual_(Barra("pbAtual", "Andamento da etapa atual")),
      pbGeral_(Barra("pbGeral", "Andamento geral")) {
    for (QPushButton* botao : {btPlano_, btEnsaio_}) botao->setAutoDefault(false);  // Enter goes on through the pages
    for (QWidget* oferta : std::initializer_list<QWidget*>{btPlano_, btEnsaio_, cbComBackup_}) oferta->hide();
    cbComBackup_->setToolTip("Só atualiza depois de fazer um backup do banco e de prová-lo");
    connect(btPlano_, &QPushButton::clicked, this, &TPaginaStatus::Planejar);
    connect(btEnsaio_, &QPushButton::clicked, this, &TPaginaStatus::Ensaiar);
    auto* linhas = new QVBoxLayout(this);
    linhas->setSpacing(4);
    auto* titulo = new QHBoxLayout;
    auto* cabecalho = Cabecalho("Status da Atualização");
    cabecalho->setBuddy(memo1_);
    titulo->addWidget(cabecalho, 1);
    for (QWidget* oferta : std::initializer_list<QWidget*>{cbComBackup_, btPlano_, btEnsaio_})
        titulo->addWidget(oferta);
    linhas->addLayout(titulo);
    linhas->addWidget(memo1_, 3);
    linhas->addWidget(Erros(), 2);
    linhas->addWidget(Andamento());
    linhas->addWidget(Fim());
    Escondidos();
}

void TPaginaStatus::Escondidos() {
    auto* btAtualizar = Botao("btAtualizar", "Atualizar ");
    auto* button1 = Botao("Button1", "Verificar índice primário");
    auto* fbArquivo = Nomeia(new TListaDeArquivos("*.wkd"), "FBArquivo", "Arquivos do pacote");
    memoLog_->setUndoRedoEnabled(false);
    for (QWidget* escondido : std::initializer_list<QWidget*>{memoLog_, pastas_, fbArquivo, btAtualizar, button1}) {
        escondido->setParent(this);
        escondido->hide();
    }
    connect(pastas_, &TListaDePastas::Escolhida, fbArquivo, &TListaDeArquivos::Lista);
    connect(btAtualizar, &QPushButton::clicked, this, &TPaginaStatus::Atualizar);
    connect(button1, &QPushButton::clicked, this, &TPaginaStatus::VerificarIndices);
}

QWidget* TPaginaStatus::Erros() {
    QFont negrito = memo2_->font();
    negrito.setBold(true);
    memo2_->setFont(negrito);
    PintaAviso(*memo2_, true);

    auto* salva = Botao("SpeedButton2", "Salvar", "Salvar a lista de erros em um arquivo");
    salva->setEnabled(false);
    connect(memo2_, &QPlainTextEdit::textChanged, salva,
            [this, salva] { salva->setEnabled(!memo2_->document()->isEmpty()); });
    connect(salva, &QPushButton::clicked, this, &TPaginaStatus::SpeedButton2Click);

    auto* parte = new QWidget;
    parte->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    auto* linhas = new QGridLayout(parte);
    linhas->setContentsMargins(0, 0, 0, 0);
    linhas->setVerticalSpacing(4);
    auto* cabecalho = Cabecalho("Erros");
    cabecalho->setBuddy(memo2_);
    linhas->addWidget(cabecalho, 0, 0);
    linhas->addWidget(salva, 0, 1);
    linhas->addWidget(memo2_, 1, 0, 1, 2);
    linhas->setColumnStretch(0, 1);
    return parte;
}

QWidget* TPaginaStatus::Andamento() {
    auto* parte = new QWidget;
    auto* linhas = new QGridLayout(parte);
    linhas->setContentsMargins(0, 0, 0, 0);
    linhas->setVerticalSpacing(4);
    linhas->addWidget(lblAtual_, 0, 0);
    linhas->addWidget(pbAtual_, 0, 1);
    linhas->addWidget(lblGeral_, 1, 0);
    linhas->addWidget(pbGeral_, 1, 1);
    linhas->addWidget(lblEstimativa_, 2, 0, 1, 2);
    linhas->setColumnStretch(0, 3);
    linhas->setColumnStretch(1, 2);
    return parte;
}

QWidget* TPaginaStatus::Fim() {
    QFont negrito = lblVeredicto_->font();
    negrito.setBold(true);
    lblVeredicto_->setFont(negrito);
    auto* log = Botao("btLogDoFim", "Log", "Abrir o log das atualizações");
    for (QPushButton* botao : {btRelatorio_, log}) botao->setAutoDefault(false);
    connect(btRelatorio_, &QPushButton::clicked, this, [this] { dialogos_.Abre(relatorio_); });
    connect(log, &QPushButton::clicked, this, &TPaginaStatus::Log);

    lblProvidencia_->setTextFormat(Qt::PlainText);
    lblProvidencia_->setWordWrap(true);
    fim_ = new QWidget;
    auto* linhas = new QGridLayout(fim_);
    linhas->setContentsMargins(0, 0, 0, 0);
    linhas->setVerticalSpacing(2);
    linhas->addWidget(lblVeredicto_, 0, 0);
    linhas->addWidget(btRelatorio_, 0, 1);
    linhas->addWidget(log, 0, 2);
    linhas->addWidget(lblProvidencia_, 1, 0, 1, 3);
    linhas->setColumnStretch(0, 1);
    fim_->hide();
    return fim_;
}

void TPaginaStatus::MostraFim(const TFimMostrado& fim) {
    const QFontMetrics letras(lblVeredicto_->font());
    const int dosBotoes = 2 * btRelatorio_->sizeHint().width() + 40;  // with the page's margins
    lblVeredicto_->setText(letras.elidedText(fim.veredicto, Qt::ElideRight, width() - dosBotoes));
    lblVeredicto_->setToolTip(fim.veredicto);
    lblVeredicto_->setAccessibleName(fim.veredicto);
    PintaAviso(*lblVeredicto_, !fim.certo);
    lblProvidencia_->setText(fim.parada ? fim.providencia + " Para isso feche a janela, e abra o assistente de novo."
                                        : fim.providencia);
    lblProvidencia_->setVisible(!fim.providencia.isEmpty());
    relatorio_ = fim.relatorio;
    btRelatorio_->setEnabled(!relatorio_.isEmpty());
    lblEstimativa_->setVisible(fim.veredicto.isEmpty());  // in its place
    fim_->setVisible(!fim.veredicto.isEmpty());
}

void TPaginaStatus::Estimativa(const QString& texto) {
    if (texto != lblEstimativa_->text()) lblEstimativa_->setText(texto);
}

void TPaginaStatus::PermitePlano(bool sim) {
    for (QWidget* oferta : std::initializer_list<QWidget*>{cbComBackup_, btPlano_, btEnsaio_}) oferta->setEnabled(sim);
}

void TPaginaStatus::OferecePlano() {
    for (QWidget* oferta : std::initializer_list<QWidget*>{cbComBackup_, btPlano_, btEnsaio_}) oferta->show();
}

bool TPaginaStatus::ComBackup() const { return cbComBackup_->isChecked(); }

void TPaginaStatus::SetComBackup(bool sim) { cbComBackup_->setChecked(sim); }

void TPaginaStatus::MostraLog(const QString& texto) { memoLog_->setPlainText(texto); }

void TPaginaStatus::AcrescentaAoLog(const QString& topo) {
    if (!topo.isEmpty()) QTextCursor(memoLog_->document()).insertText(topo);
}

void TPaginaStatus::MostraPasta(const QString& pasta) {
    if (!pasta.isEmpty()) pastas_->Escolhe(pasta);
}

void TPaginaStatus::SpeedButton2Click() {
    const QString nome = dialogos_.ArquivoParaGravar("AtualizaQueryErro.log", {});
    if (nome.isEmpty()) return;
    QString texto = memo2_->toPlainText().replace("\n", "\r\n");
    if (!texto.isEmpty()) texto += "\r\n";
    GravaArquivo(dialogos_, nome, texto.toUtf8());
}

}  // namespace wkd
