#pragma once

#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>

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

}  // namespace wkd
