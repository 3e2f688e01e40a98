#pragma once

#include <QDialog>

#include "aliases/Aliases.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace wkd {

class IDialogos;
class TPainelOcupado;

/// Makes an alias, or changes one, and tries it on its server before it is written.
class TDialogoDeAlias : public QDialog {
    Q_OBJECT
  public:
    /// With an empty name a new one is made.
    TDialogoDeAlias(const TAliases& aliases, IDialogos& dialogos, const std::string& nome, QWidget* janela);

    /// Of the alias that was written.
    QString Nome() const;

  private:
    QWidget* Botoes();
    void Mostra();
    /// As the boxes have it, with what they do not show.
    TAlias Lido() const;
    /// Says what is missing; false then.
    bool Conferido(const TAlias& alias);
    void Diz(const QString& texto, bool certo);
    void TipoEscolhido();
    void EscolheArquivo();
    void Testar();
    void Gravar();

    TAliases aliases_;
    IDialogos& dialogos_;
    TAlias alias_;
    bool novo_;
    QLineEdit* edNome_;
    QComboBox* cbTipo_;
    QLabel* lblServidor_;
    QLineEdit* edServidor_;
    QLineEdit* edCaminho_;
    QLineEdit* edBanco_;
    QPushButton* btArquivo_;
    QLineEdit* edUsuario_;
    QLineEdit* edSenha_;
    QPlainTextEdit* mResultado_;
    TPainelOcupado* ocupado_;
};

}  // namespace wkd
