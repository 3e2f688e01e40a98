#pragma once

#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QString>

namespace wkd {

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
