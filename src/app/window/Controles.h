#pragma once

#include <QComboBox>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QString>
#include <string>
#include <string_view>

#include "commands/TextoQt.h"

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
/// Heading of a page.
QLabel* Cabecalho(const QString& texto);
QLabel* RotuloVermelho(const QString& texto);
QLineEdit* Edicao(const char* nome, const QString& lido, const QString& texto = {});

}  // namespace wkd
