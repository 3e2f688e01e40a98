#include "window/PaginaAlias.h"

#include <QGridLayout>
#include <QHeaderView>
#include <QTableWidget>

#include "Troca.h"
#include "run/TravaDoBanco.h"
#include "window/Controles.h"
#include "window/PaginaOpcoes.h"

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
      gridUsuariosOnline_(Grade()) {
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

void TPaginaAlias::EscondeUsuarios() { gridUsuariosOnline_->hide(); }

void TPaginaAlias::Mostra(const TDadosDoAlias& dados) {
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

namespace {

/// A restore that was cut off may have left the place of the database empty, or half filled.
void DizOndeEsta(THBNConnection& conexao, TDadosDoAlias& dados) {
    const bool foraDoLugar =
        dados.erro.find("No such file") != std::string::npos || dados.erro.find("shutdown") != std::string::npos;
    if (!foraDoLugar) return;
    try {
        for (const auto& linha : RestosDeBackup(conexao)) dados.erro += "\n" + linha;
    } catch (const std::exception&) {  // the first error tells the cause
    }
}

void Abre(TDataModulo& dm, const std::string& alias, TDadosDoAlias& dados) {
    try {
        dm.nomeAlias = alias;
        dm.SQLConnection1.SetAlias(alias);
        dm.SQLConnection1.Open();
    } catch (const std::exception& erro) {
        dados.erro = erro.what();
        DizOndeEsta(dm.SQLConnection1, dados);
    }
}

/// The embedded engine says only that somebody has the file.
void DizQuemAtualiza(TDataModulo& dm, TDadosDoAlias& dados) {
    const auto quem = dm.SQLConnection1.Connected() ? std::nullopt : QuemAtualiza(dm.SQLConnection1);
    if (!quem) return;
    dados.outraAtualizacao = true;
    dados.erro = TOutraAtualizacao(*quem).what();
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
    } catch (const std::exception&) {
    }
    return true;
}

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
        if (dados.erro.empty()) dados.erro = erro.what();
    }
    return dados;
}

}  // namespace wkd
