#include "window/PaginaAlias.h"

#include <QGridLayout>
#include <QHeaderView>
#include <QTableWidget>

#include "window/Dialogos.h"
#include "window/PaginaOpcoes.h"
#include "window/PaginaStatus.h"

namespace wkd {

namespace {

struct TColuna {
    const char* titulo;
    int larguraEmLetras;
    std::string TUsuarioOnline::*campo;
};
const TColuna kColunas[] = {{"Nome", 22, &TUsuarioOnline::nomeCompleto},
                            {"Departamento", 22, &TUsuarioOnline::departamento},
                            {"Email", 30, &TUsuarioOnline::email}};

QTableWidget* Grade() {
    auto* grade =
        Nomeia(new QTableWidget(0, static_cast<int>(std::size(kColunas))), "gridUsuariosOnline", "Usuários online");
    grade->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grade->setSelectionBehavior(QAbstractItemView::SelectRows);
    grade->setAlternatingRowColors(true);
    grade->setTabKeyNavigation(false);
    grade->verticalHeader()->hide();
    grade->horizontalHeader()->setStretchLastSection(true);
    for (int i = 0; i < grade->columnCount(); ++i) {
        grade->setHorizontalHeaderItem(i, new QTableWidgetItem(kColunas[i].titulo));
        grade->setColumnWidth(i, kColunas[i].larguraEmLetras * grade->fontMetrics().averageCharWidth() + 16);
    }
    grade->hide();
    return grade;
}

}  // namespace

TPaginaAlias::TPaginaAlias()
    : edAlias_(Nomeia(new TListaDeAlias, "edAlias", "Alias")),
      edCaminhoBanco_(Edicao("edCaminhoBanco", "Banco de Dados")),
      lblNumUsuarios_(Nomeia(new QLabel, "lblNumUsuarios")),
      gridUsuariosOnline_(Grade()),
      mErro_(Nomeia(new TMemoDeLinhas, "mErroDoAlias", "Por que não há conexão")) {
    edCaminhoBanco_->setReadOnly(true);
    setFocusProxy(edAlias_);

    auto* linhas = new QGridLayout(this);
    linhas->addWidget(Cabecalho("Escolha o alias que deseja atualizar"), 0, 0, 1, 2);
    linhas->addWidget(edAlias_, 1, 0, 1, 2);
    linhas->addWidget(new QLabel("Banco de Dados:"), 2, 0);
    linhas->addWidget(edCaminhoBanco_, 2, 1);
    linhas->addWidget(new QLabel("Nº Usuários online: "), 3, 0);
    linhas->addWidget(lblNumUsuarios_, 3, 1);
    linhas->addWidget(gridUsuariosOnline_, 4, 0, 1, 2);
    linhas->addWidget(mErro_, 4, 0, 1, 2);  // never both
    mErro_->hide();
    linhas->setColumnStretch(1, 1);
    linhas->setRowStretch(4, 1);

    connect(edAlias_, &TListaDeAlias::CloseUp, this, &TPaginaAlias::Escolhido);
    connect(edAlias_, &TListaDeAlias::Exit, this, &TPaginaAlias::Escolhido);
}

void TPaginaAlias::Lista(const std::vector<std::string>& aliases, const QString& arquivoIni) {
    edAlias_->clear();
    for (const std::string& alias : aliases) edAlias_->addItem(Q(alias));
    edAlias_->setCurrentIndex(-1);
    edAlias_->setToolTip(arquivoIni);
}

void TPaginaAlias::Escolhe(const QString& alias) {
    edAlias_->setCurrentIndex(edAlias_->findText(alias, Qt::MatchFixedString));
}

QString TPaginaAlias::Alias() const { return edAlias_->currentText(); }

void TPaginaAlias::EscondeUsuarios() {
    gridUsuariosOnline_->hide();
    lblNumUsuarios_->clear();
    edCaminhoBanco_->clear();
    Explica({});
}

void TPaginaAlias::Explica(const QString& texto) {
    mErro_->setPlainText(texto);
    mErro_->setVisible(!texto.isEmpty());
}

namespace {

constexpr const char* kGeracaoAnterior =
    "Este banco é da geração anterior: não tem a tabela de usuários conectados. Confira de outro modo que ninguém está "
    "no sistema; a atualização pode seguir.";

}  // namespace

void TPaginaAlias::Mostra(const TDadosDoAlias& dados) {
    Explica(dados.erro ? Q(ExplicaConexao(*dados.erro)) : dados.usuariosOnline ? QString() : QString(kGeracaoAnterior));
    lblNumUsuarios_->setText(Q(dados.numUsuarios));
    edCaminhoBanco_->setText(Q(dados.caminhoBanco));
    gridUsuariosOnline_->setVisible(dados.usuariosOnline);
    gridUsuariosOnline_->setRowCount(static_cast<int>(dados.usuarios.size()));
    for (int linha = 0; linha < gridUsuariosOnline_->rowCount(); ++linha)
        for (int coluna = 0; coluna < gridUsuariosOnline_->columnCount(); ++coluna)
            gridUsuariosOnline_->setItem(
                linha, coluna,
                new QTableWidgetItem(Q(dados.usuarios[static_cast<std::size_t>(linha)].*kColunas[coluna].campo)));
}

}  // namespace wkd
