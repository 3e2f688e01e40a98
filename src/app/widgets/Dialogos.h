#pragma once

#include <QComboBox>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QString>
#include <QStringList>
#include <string>
#include <string_view>

#include "commands/TextoQt.h"
#include "screen/Tela.h"

class QTextDocument;

namespace wkd {

/// Combo box whose typed text turns to capitals; Enter asks for its text to be taken.
class TComboMaiusculo : public QComboBox {
    Q_OBJECT
  public:
    TComboMaiusculo() {
        setEditable(true);
        setInsertPolicy(QComboBox::NoInsert);
        connect(this, &QComboBox::editTextChanged, this, &TComboMaiusculo::ParaMaiusculas);
    }

  signals:
    void Enter();

  protected:
    void keyPressEvent(QKeyEvent* evento) override {
        if (evento->key() == Qt::Key_Return || evento->key() == Qt::Key_Enter)
            emit Enter();
        else
            QComboBox::keyPressEvent(evento);
    }

  private:
    void ParaMaiusculas(const QString& texto) {
        const QString maiusculo = texto.toUpper();
        if (maiusculo == texto) return;
        const int posicao = lineEdit()->cursorPosition();
        setEditText(maiusculo);
        lineEdit()->setCursorPosition(posicao);
    }
};

// How the pages make their controls: every one has its name, by which it is driven, and what a screen reader says.

template <class T>
T* Nomeia(T* controle, const char* nome, const QString& lido = {}) {
    controle->setObjectName(nome);
    if (!lido.isEmpty()) controle->setAccessibleName(lido);
    return controle;
}

/// Push button that Enter presses only while it has the focus.
QPushButton* Botao(const char* nome, const QString& texto, const QString& dica = {});
/// Button "..." that fills the edit beside it.
QPushButton* Reticencias(const char* nome, const QString& dica);
/// Width of a button with no more than a sign.
int LarguraDoSinal(const QPushButton& botao);
/// Label that names a field, for those who hear the window as well.
QLabel* RotuloDe(const QString& texto, QWidget* campo);
/// Heading of a page.
QLabel* Cabecalho(const QString& texto);
QLabel* RotuloVermelho(const QString& texto);
/// Text of a control in red, or as any other.
void PintaAviso(QWidget& controle, bool vermelho);
QLineEdit* Edicao(const char* nome, const QString& lido, const QString& texto = {});

/// What the window asks of the person in front of it and of the desktop. Paths are empty when cancelled.
class IDialogos {
  public:
    virtual ~IDialogos() = default;

    virtual void Informacao(const QString& texto) = 0;
    virtual void Erro(const QString& texto) = 0;
    /// True for Yes.
    virtual bool Confirmacao(const QString& texto) = 0;
    virtual TAcaoReconcilia Reconcilia(const QString& erro) = 0;

    virtual QString ArquivoParaAbrir() = 0;
    /// Backup file of a database.
    virtual QString BackupParaAbrir() = 0;
    /// A Firebird database of this machine.
    virtual QString BancoParaAbrir() = 0;
    /// Of one of these kinds, any without them; a name without extension gets that of the chosen kind.
    virtual QString ArquivoParaGravar(const QString& proposto, const QStringList& tipos) = 0;
    /// A folder, which may be made in the dialog.
    virtual QString Pasta(const QString& atual) = 0;
    /// Opens the file with the desktop's own program.
    virtual void Abre(const QString& arquivo) = 0;
    /// On paper, page by page, on the printer that the person chooses.
    virtual void Imprime(const QString& titulo, const QTextDocument& documento) = 0;
};

/// The real dialogs, in Portuguese. Each comes to the foreground with the window that it belongs to.
class TDialogosQt : public IDialogos {
  public:
    void Informacao(const QString& texto) override;
    void Erro(const QString& texto) override;
    bool Confirmacao(const QString& texto) override;
    TAcaoReconcilia Reconcilia(const QString& erro) override;
    QString ArquivoParaAbrir() override;
    QString BackupParaAbrir() override;
    QString BancoParaAbrir() override;
    QString ArquivoParaGravar(const QString& proposto, const QStringList& tipos) override;
    QString Pasta(const QString& atual) override;
    void Abre(const QString& arquivo) override;
    void Imprime(const QString& titulo, const QTextDocument& documento) override;
};

/// Writes the file whole or not at all; false, and why, when it could not.
bool GravaArquivo(IDialogos& dialogos, const QString& nome, const QByteArray& conteudo);

}  // namespace wkd
