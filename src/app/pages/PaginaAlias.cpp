#include "pages/PaginaAlias.h"

#include <QGridLayout>
#include <QHeaderView>
#include <QTableWidget>

#include "pages/PaginaOpcoes.h"
#include "pages/PaginaStatus.h"
#include "widgets/Dialogos.h"

namespace wkd {

namespace {

template <class TLinhaMostrada>
struct TColunaDaGrade {
    const char* titulo;
    int larguraEmLetras;
    std::string TLinhaMostrada::*campo;
};
const TColunaDaGrade<TUsuarioOnline> kDosUsuarios[] = {{"Nome", 22, &TUsuarioOnline::nomeCompleto},
                                                       {"Departamento", 22, &TUsuarioOnline::departamento},
                                                       {"Email", 30, &TUsuarioOnline::email}};
const TColunaDaGrade<TConectado> kDosConectados[] = {{"Usuário", 14, &TConectado::usuario},
                                                     {"Computador", 22, &TConectado::computador},
                                                     {"Programa", 30, &TConectado::programa},
                                                     {"Desde", 16, &TConectado::desde}};

template <class TColunas>
QTableWidget* Grade(const char* nome, const QString& lida, const TColunas& colunas) {
    auto* grade = Nomeia(new QTableWidget(0, static_cast<int>(std::size(colunas))), nome, lida);
    grade->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grade->setSelectionBehavior(QAbstractItemView::SelectRows);
    grade->setAlternatingRowColors(true);
    grade->setTabKeyNavigation(false);
    grade->verticalHeader()->hide();
    grade->horizontalHeader()->setStretchLastSection(true);
    grade->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    for (int i = 0; i < grade->columnCount(); ++i) {
        grade->setHorizontalHeaderItem(i, new QTableWidgetItem(colunas[i].titulo));
        grade->setColumnWidth(i, colunas[i].larguraEmLetras * grade->fontMetrics().averageCharWidth() + 16);
    }
    grade->hide();
    return grade;
}

template <class TLinhas, class TColunas>
void PoeNaGrade(QTableWidget& grade, const TLinhas& linhas, const TColunas& colunas) {
    grade.setRowCount(static_cast<int>(linhas.size()));
    for (int linha = 0; linha < grade.rowCount(); ++linha)
        for (int coluna = 0; coluna < grade.columnCount(); ++coluna)
            grade.setItem(linha, coluna,
                          new QTableWidgetItem(Q(linhas[static_cast<std::size_t>(linha)].*colunas[coluna].campo)));
}

constexpr int kLinhaDosUsuarios = 5, kLinhaDoErro = 6, kLinhaDosConectados = 8;

}  // namespace

TPaginaAlias::TPaginaAlias(TUltima ultima)
    : ultima_(std::move(ultima)),
      edAlias_(Nomeia(new TListaDeAlias, "edAlias", "Alias")),
      btAlterar_(Botao("btAlterarAlias", "&Alterar...", "Alterar o alias escolhido, e testá-lo")),
      edCaminhoBanco_(Edicao("edCaminhoBanco", "Banco de Dados")),
      lblUltima_(Nomeia(new QLabel, "lblUltimaAtualizacao")),
      lblNumUsuarios_(Nomeia(new QLabel, "lblNumUsuarios")),
      btReler_(Botao("btReler", "R&eler", "Ler de novo quem está conectado")),
      btLiberar_(Botao("btLiberar", "Li&berar...",
                       "Tirar a marca de conectado de quem a tem desde uma queda: das linhas escolhidas, ou de todos")),
      lblUsuarios_(new QLabel("Nº Usuários online: ")) {
    edCaminhoBanco_->setReadOnly(true);
    lblUltima_->setTextFormat(Qt::PlainText);
    lblUltima_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);  // a long verdict does not widen the window
    setFocusProxy(edAlias_);

    auto* novo = Botao("btNovoAlias", "&Novo...", "Criar um alias");
    for (QPushButton* botao : {novo, btAlterar_}) {
        botao->setAutoDefault(false);
        botao->setFocusPolicy(Qt::TabFocus);  // a click does not leave the list, which would open the alias once more
    }
    btAlterar_->setEnabled(false);

    auto* linhas = new QGridLayout(this);
    linhas->setVerticalSpacing(6);
    auto* cabecalho = Cabecalho("Escolha o alias que deseja atualizar");
    cabecalho->setBuddy(edAlias_);
    linhas->addWidget(cabecalho, 0, 0, 1, 2);
    auto* escolha = new QHBoxLayout;
    escolha->addWidget(edAlias_, 1);
    escolha->addWidget(novo);
    escolha->addWidget(btAlterar_);
    linhas->addLayout(escolha, 1, 0, 1, 2);
    linhas->addWidget(RotuloDe("Banco de Dados:", edCaminhoBanco_), 2, 0);
    linhas->addWidget(edCaminhoBanco_, 2, 1);
    linhas->addWidget(new QLabel("Última atualização:"), 3, 0);
    linhas->addWidget(lblUltima_, 3, 1);
    linhas->addWidget(lblUsuarios_, 4, 0);
    linhas->addLayout(Numero(), 4, 1);
    linhas->setColumnStretch(1, 1);
    linhas->setRowStretch(kLinhaDoErro, 1);

    connect(edAlias_, &TListaDeAlias::CloseUp, this, &TPaginaAlias::Escolhido);
    connect(edAlias_, &TListaDeAlias::Exit, this, &TPaginaAlias::Escolhido);
    connect(edAlias_, &QComboBox::currentIndexChanged, this, [this](int qual) { btAlterar_->setEnabled(qual >= 0); });
    connect(novo, &QPushButton::clicked, this, &TPaginaAlias::Novo);
    connect(btReler_, &QPushButton::clicked, this, &TPaginaAlias::Escolhido);
    connect(btLiberar_, &QPushButton::clicked, this, &TPaginaAlias::Liberar);
    connect(btAlterar_, &QPushButton::clicked, this, &TPaginaAlias::Alterar);
}

/// How many users, and what can be done about them.
QLayout* TPaginaAlias::Numero() {
    auto* linha = new QHBoxLayout;
    linha->addWidget(lblNumUsuarios_, 1);
    for (QPushButton* botao : {btReler_, btLiberar_}) {
        botao->setAutoDefault(false);
        botao->setFocusPolicy(Qt::TabFocus);
        botao->setEnabled(false);
        linha->addWidget(botao);
    }
    return linha;
}

TPaginaAlias::TDetalhes& TPaginaAlias::Detalhes() {
    if (!detalhes_) FazDetalhes();
    return *detalhes_;
}

void TPaginaAlias::FazDetalhes() {
    auto* usuarios = Grade("gridUsuariosOnline", "Usuários online", kDosUsuarios);
    auto* erro = Nomeia(new TMemoDeLinhas, "mErroDoAlias", "Por que não há conexão");
    auto* quantos = Nomeia(new QLabel, "lblConectados");
    auto* conectados = Grade("gridConectados", "Conexões que o servidor conhece", kDosConectados);
    lblUsuarios_->setBuddy(usuarios);
    erro->hide();
    quantos->setTextFormat(Qt::PlainText);
    quantos->setWordWrap(true);
    quantos->setToolTip("Um usuário sem esse direito no servidor vê só as conexões dele");
    auto& linhas = static_cast<QGridLayout&>(*layout());
    linhas.addWidget(usuarios, kLinhaDosUsuarios, 0, 1, 2);
    linhas.addWidget(erro, kLinhaDoErro, 0, 1, 2);  // never both
    linhas.addWidget(quantos, 7, 0, 1, 2);
    linhas.addWidget(conectados, kLinhaDosConectados, 0, 1, 2);
    setTabOrder(btLiberar_, usuarios);
    setTabOrder(usuarios, erro);
    setTabOrder(erro, conectados);
    detalhes_ = {usuarios, erro, quantos, conectados};
}

void TPaginaAlias::Lista(const std::vector<std::string>& aliases, const QString& arquivoIni) {
    edAlias_->clear();
    for (const std::string& alias : aliases) edAlias_->addItem(Q(alias));
    edAlias_->setCurrentIndex(-1);
    edAlias_->setToolTip(arquivoIni);
    if (aliases.empty()) Explica("Não há alias em " + arquivoIni + ". Crie um com Novo.");
}

void TPaginaAlias::Escolhe(const QString& alias) {
    edAlias_->setCurrentIndex(edAlias_->findText(alias, Qt::MatchFixedString));
}

bool TPaginaAlias::Vazia() const { return edAlias_->count() == 0; }

void TPaginaAlias::ConcluiSaida() { edAlias_->ConcluiSaida(); }

QString TPaginaAlias::Alias() const { return edAlias_->currentText(); }

void TPaginaAlias::EscondeUsuarios() {
    Mostra({});
    Explica({});
}

void TPaginaAlias::Explica(const QString& texto) {
    Detalhes().erro->setPlainText(texto);
    Detalhes().erro->setAccessibleDescription(texto);
    Detalhes().erro->setVisible(!texto.isEmpty());
}

namespace {

constexpr const char* kGeracaoAnterior =
    "Este banco é da geração anterior: não tem a tabela de usuários conectados. Confira de outro modo que ninguém está "
    "no sistema; a atualização pode seguir.";

QString TextoDosConectados(const TDadosDoAlias& dados) {
    if (!dados.semConectados.empty()) return Q("Não foi possível ler as conexões do servidor: " + dados.semConectados);
    const auto quantas = dados.conectados.size();
    return "Outras conexões ao banco que o servidor conhece: " +
           (quantas == 0 ? QString("nenhuma") : QString::number(quantas));
}

}  // namespace

void TPaginaAlias::Mostra(const TDadosDoAlias& dados) {
    dados_ = dados;
    Explica(dados.erro ? Q(ExplicaConexao(*dados.erro)) : dados.usuariosOnline ? QString() : QString(kGeracaoAnterior));
    lblNumUsuarios_->setText(Q(dados.numUsuarios));
    edCaminhoBanco_->setText(Q(dados.caminhoBanco));
    Detalhes().usuarios->setVisible(dados.usuariosOnline);
    PoeNaGrade(*Detalhes().usuarios, dados.usuarios, kDosUsuarios);
    MostraUltima();
    btReler_->setEnabled(!dados.numUsuarios.empty());
    btLiberar_->setEnabled(!dados.usuarios.empty());
    Detalhes().quantos->setText(dados.conectado ? TextoDosConectados(dados) : QString());
    Detalhes().conectados->setVisible(!dados.conectados.empty());
    PoeNaGrade(*Detalhes().conectados, dados.conectados, kDosConectados);
    ReparteAltura();
}

void TPaginaAlias::showEvent(QShowEvent* evento) {
    QWidget::showEvent(evento);
    MostraUltima();
}

void TPaginaAlias::MostraUltima() {
    const QString texto = Alias().isEmpty() ? QString() : Q(ultima_(S(Alias())));
    lblUltima_->setText(texto);
    lblUltima_->setToolTip(texto);
}

/// What the lines leave belongs to the lists that are shown, else to nobody.
void TPaginaAlias::ReparteAltura() {
    auto& linhas = static_cast<QGridLayout&>(*layout());
    const bool lista = !Detalhes().usuarios->isHidden();
    linhas.setRowStretch(kLinhaDosUsuarios, lista ? 1 : 0);
    linhas.setRowStretch(kLinhaDoErro, lista ? 0 : 1);
    linhas.setRowStretch(kLinhaDosConectados, Detalhes().conectados->isHidden() ? 0 : 1);
}

std::vector<TUsuarioOnline> TPaginaAlias::UsuariosEscolhidos() {
    std::vector<TUsuarioOnline> escolhidos;
    for (int linha = 0; linha < Detalhes().usuarios->rowCount(); ++linha)
        if (Detalhes().usuarios->selectionModel()->isRowSelected(linha, {}))
            escolhidos.push_back(dados_.usuarios[static_cast<std::size_t>(linha)]);
    return escolhidos.empty() ? dados_.usuarios : escolhidos;
}

}  // namespace wkd
