#include "DialogosQt.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QUrl>

namespace wkd {

namespace {

/// The active window, else the program's own, brought to the foreground.
QWidget* JanelaNaFrente() {
    QWidget* janela = QApplication::activeWindow();
    const QWidgetList todas = QApplication::topLevelWidgets();
    for (qsizetype i = 0; !janela && i < todas.size(); ++i)
        if (todas[i]->isVisible()) janela = todas[i];
    if (!janela) return nullptr;
    janela->raise();
    janela->activateWindow();
    return janela;
}

class TCaixa : public QMessageBox {
  public:
    TCaixa(Icon icone, const QString& texto) : QMessageBox(icone, "AtualizaWKD", texto, NoButton, JanelaNaFrente()) {
        setTextFormat(Qt::PlainText);
        setTextInteractionFlags(Qt::TextSelectableByMouse);
    }

    /// Its first letter alone presses the button too.
    QPushButton* Botao(const QString& texto, ButtonRole papel) {
        QPushButton* botao = addButton(texto, papel);
        botao->setShortcut(QKeySequence(texto.left(1)));
        return botao;
    }

    QAbstractButton* Pergunta(QPushButton* padrao, QPushButton* escape) {
        setDefaultButton(padrao);
        setEscapeButton(escape);
        exec();
        return clickedButton();
    }
};

}  // namespace

void TDialogosQt::Informacao(const QString& texto) {
    TCaixa caixa(QMessageBox::Information, texto);
    QPushButton* ok = caixa.Botao("OK", QMessageBox::AcceptRole);
    caixa.Pergunta(ok, ok);
}

bool TDialogosQt::Confirmacao(const QString& texto) {
    TCaixa caixa(QMessageBox::Question, texto);
    QPushButton* sim = caixa.Botao("Sim", QMessageBox::YesRole);
    QPushButton* nao = caixa.Botao("Não", QMessageBox::NoRole);
    return caixa.Pergunta(nao, nao) == sim;
}

TAcaoReconcilia TDialogosQt::Reconcilia(const QString& erro) {
    TCaixa caixa(QMessageBox::Warning, erro);
    QPushButton* pula = caixa.Botao("Pular", QMessageBox::AcceptRole);
    const QPushButton* cancela = caixa.Botao("Cancelar", QMessageBox::RejectRole);
    const QPushButton* aborta = caixa.Botao("Abortar", QMessageBox::DestructiveRole);
    const QAbstractButton* resposta = caixa.Pergunta(pula, pula);
    if (resposta == cancela) return TAcaoReconcilia::Cancela;
    return resposta == aborta ? TAcaoReconcilia::Aborta : TAcaoReconcilia::Pula;
}

QString TDialogosQt::ArquivoParaAbrir() {
    return QFileDialog::getOpenFileName(JanelaNaFrente(), "Arquivo de Atualização", {},
                                        "Pacotes de atualização (*.zip *.ZIP);;Todos os arquivos (*)");
}

QString TDialogosQt::ArquivoParaGravar(const QString& proposto) {
    return QFileDialog::getSaveFileName(JanelaNaFrente(), "Salvar", proposto);
}

QString TDialogosQt::Pasta(const QString& atual) {
    return QFileDialog::getExistingDirectory(JanelaNaFrente(), "Pasta de backup", atual);
}

void TDialogosQt::Abre(const QString& arquivo) { QDesktopServices::openUrl(QUrl::fromLocalFile(arquivo)); }

}  // namespace wkd
