#include "pages/PaginaOpcoes.h"

#include <QCheckBox>
#include <QCompleter>
#include <QGridLayout>
#include <QPlainTextEdit>
#include <QRadioButton>

#include "context/Contexto.h"
#include "widgets/Dialogos.h"

namespace wkd {

namespace {

QCheckBox* Caixa(const char* nome, const char* texto, bool marcada = false) {
    auto* caixa = Nomeia(new QCheckBox(texto), nome);
    caixa->setChecked(marcada);
    return caixa;
}

QGroupBox* Grupo(const char* titulo, std::initializer_list<QWidget*> controles) {
    auto* grupo = new QGroupBox(titulo);
    auto* linhas = new QVBoxLayout(grupo);
    for (QWidget* controle : controles) linhas->addWidget(controle);
    return grupo;
}

}  // namespace

TPaginaOpcoes::TPaginaOpcoes(TExisteTabela existeTabela, IDialogos& dialogos)
    : existeTabela_(std::move(existeTabela)),
      dialogos_(dialogos),
      cbAtualizaTodas_(Caixa("cbAtualizaTodas", "Atualizar todas as tabelas")),
      cbCompleto_(Caixa("cbCompleto", "Atualizar todas as tabelas (Completo)")),
      chkQuerysAnteriores_(Caixa("chkQuerysAnteriores", "Querys Anteriores", true)),
      chkQuerysPosteriores_(Caixa("chkQuerysPosteriores", "Querys Posteriores", true)),
      cbTabela_(Caixa("cbTabela", "Atualizar as tabelas selecionadas a baixo")),
      edTabela_(Nomeia(new TComboMaiusculo, "edTabela", "Tabela")),
      mListaTabelas_(Nomeia(new QPlainTextEdit, "mListaTabelas", "Tabelas selecionas para atualização")),
      modoNormal_(Nomeia(new QRadioButton("Normal"), "rgModoAtualizacao0")),
      modoCompleto_(Nomeia(new QRadioButton("Completo"), "rgModoAtualizacao1")) {
    auto* colunas = new QGridLayout(this);
    colunas->addWidget(Cabecalho("Escolha as opções de atualização:"), 0, 0, 1, 2);
    colunas->addWidget(Grupo("Atualizando todas as tabelas", {cbAtualizaTodas_, cbCompleto_}), 1, 0);
    colunas->addWidget(Grupo("Querys", {chkQuerysAnteriores_, chkQuerysPosteriores_}), 2, 0);
    colunas->addWidget(Selecionadas(), 1, 1, 3, 1);
    colunas->setRowStretch(3, 1);
    colunas->setColumnStretch(1, 1);
    setFocusProxy(cbAtualizaTodas_);

    connect(cbTabela_, &QCheckBox::toggled, this, &TPaginaOpcoes::cbTabelaClick);
    connect(cbAtualizaTodas_, &QCheckBox::toggled, this, &TPaginaOpcoes::cbAtualizaTodasClick);
    connect(cbCompleto_, &QCheckBox::toggled, this, &TPaginaOpcoes::cbCompletoClick);
    connect(edTabela_, &TComboMaiusculo::Enter, this, &TPaginaOpcoes::BitBtn1Click);
    cbTabelaClick();
}

QWidget* TPaginaOpcoes::Selecionadas() {
    mListaTabelas_->setTabChangesFocus(true);
    auto* adiciona = Botao("BitBtn1", "+", "Adicionar á lista de atualização");
    adiciona->setAccessibleName("Adicionar á lista de atualização");
    auto* tira = Botao("btTiraTabela", "−", "Tirar da lista a tabela em que está o cursor");
    tira->setAccessibleName("Tirar da lista de atualização");
    for (QPushButton* botao : {adiciona, tira}) botao->setFixedWidth(LarguraDoSinal(*botao));
    tira->setEnabled(false);
    connect(mListaTabelas_, &QPlainTextEdit::textChanged, tira,
            [this, tira] { tira->setEnabled(!Listadas().isEmpty()); });
    connect(tira, &QPushButton::clicked, this, &TPaginaOpcoes::TiraTabela);
    edTabela_->completer()->setFilterMode(Qt::MatchContains);
    edTabela_->completer()->setCompletionMode(QCompleter::PopupCompletion);
    connect(adiciona, &QPushButton::clicked, this, &TPaginaOpcoes::BitBtn1Click);

    gbSelecionadas_ = new QGroupBox("Atualizar tabelas selecionadas");
    auto* linhas = new QGridLayout(gbSelecionadas_);
    linhas->addWidget(cbTabela_, 0, 0, 1, 2);
    linhas->addWidget(edTabela_, 1, 0);
    linhas->addWidget(adiciona, 1, 1);
    auto* rotulo = RotuloVermelho("Tabelas selecionas para atualização");
    rotulo->setBuddy(mListaTabelas_);
    linhas->addWidget(rotulo, 2, 0);
    linhas->addWidget(tira, 2, 1);
    linhas->addWidget(mListaTabelas_, 3, 0, 1, 2);
    linhas->addWidget(Modo(), 4, 0, 1, 2);
    linhas->setColumnStretch(0, 1);
    return gbSelecionadas_;
}

QWidget* TPaginaOpcoes::Modo() {
    modoNormal_->setChecked(true);
    rgModoAtualizacao_ = Nomeia(new QGroupBox("Modo de atualização das tabelas selecionadas"), "rgModoAtualizacao");
    auto* linha = new QHBoxLayout(rgModoAtualizacao_);
    linha->addWidget(modoNormal_);
    linha->addWidget(modoCompleto_);
    linha->addStretch();
    return rgModoAtualizacao_;
}

void TPaginaOpcoes::Oferece(const std::vector<std::string>& tabelas) {
    edTabela_->clear();
    for (const std::string& tabela : tabelas)
        if (tabela.starts_with('T') || tabela.starts_with('t')) edTabela_->addItem(Q(tabela).toUpper());
    edTabela_->setCurrentIndex(-1);
    edTabela_->clearEditText();
}

void TPaginaOpcoes::Le(TOpcoes& opcoes) const {
    opcoes.todas = cbAtualizaTodas_->isChecked();
    opcoes.completo = cbCompleto_->isChecked();
    opcoes.querysAnteriores = chkQuerysAnteriores_->isChecked();
    opcoes.querysPosteriores = chkQuerysPosteriores_->isChecked();
    opcoes.tabelasSelecionadas = cbTabela_->isChecked();
    opcoes.modoCompleto = modoCompleto_->isChecked();
    opcoes.tabelas.clear();
    for (const QString& tabela : Listadas()) opcoes.tabelas.push_back(S(tabela));
}

void TPaginaOpcoes::Marca(const TOpcoes& opcoes) {
    cbAtualizaTodas_->setChecked(opcoes.todas);
    cbCompleto_->setChecked(opcoes.completo);
    chkQuerysAnteriores_->setChecked(opcoes.querysAnteriores);
    chkQuerysPosteriores_->setChecked(opcoes.querysPosteriores);
    cbTabela_->setChecked(opcoes.tabelasSelecionadas);
    (opcoes.modoCompleto ? modoCompleto_ : modoNormal_)->setChecked(true);
    mListaTabelas_->clear();
    for (const auto& tabela : opcoes.tabelas) mListaTabelas_->appendPlainText(Q(tabela));
}

/// Those of the lines that the cursor or the selection is in.
void TPaginaOpcoes::TiraTabela() {
    QTextCursor cursor = mListaTabelas_->textCursor();
    const int fim = cursor.selectionEnd();
    cursor.setPosition(cursor.selectionStart());
    cursor.movePosition(QTextCursor::StartOfBlock);
    cursor.setPosition(fim, QTextCursor::KeepAnchor);
    cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    if (!cursor.atEnd())
        cursor.deleteChar();
    else
        cursor.deletePreviousChar();
}

QStringList TPaginaOpcoes::Listadas() const { return mListaTabelas_->toPlainText().split('\n', Qt::SkipEmptyParts); }

void TPaginaOpcoes::cbTabelaClick() {
    edTabela_->setEnabled(cbTabela_->isChecked());
    mListaTabelas_->setEnabled(cbTabela_->isChecked());
}

/// The selected tables are free as long as not all are updated anyway.
bool TPaginaOpcoes::LiberaSelecionadas() {
    const bool livre = !cbCompleto_->isChecked() && !cbAtualizaTodas_->isChecked();
    for (QWidget* controle : std::initializer_list<QWidget*>{gbSelecionadas_, cbTabela_, edTabela_, rgModoAtualizacao_})
        controle->setEnabled(livre);
    return livre;
}

void TPaginaOpcoes::LimpaSelecionadas() {
    cbTabela_->setChecked(false);
    edTabela_->clearEditText();
    modoNormal_->setChecked(true);
}

void TPaginaOpcoes::cbAtualizaTodasClick() {
    LiberaSelecionadas();
    if (cbAtualizaTodas_->isChecked()) LimpaSelecionadas();
}

void TPaginaOpcoes::cbCompletoClick() {
    if (!LiberaSelecionadas()) LimpaSelecionadas();
}

void TPaginaOpcoes::BitBtn1Click() {
    const QString tabela = edTabela_->currentText();
    if (Listadas().contains(tabela, Qt::CaseInsensitive))
        dialogos_.Informacao("A tabela " + tabela + " já foi adicionada a lista de atualização.");
    else if (existeTabela_(S(tabela)))
        mListaTabelas_->appendPlainText(tabela);
    else
        dialogos_.Informacao("A tabela " + tabela + " não existe.");
}

}  // namespace wkd
