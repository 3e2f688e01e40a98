#pragma once

#include <QDialog>
#include <QStringList>

#include "plan/Plano.h"

class QLabel;
class QLineEdit;

namespace wkd {

class IDialogos;
class TMemoDeLinhas;

/// The lines that contain the text, whatever its case, with those that they stand under and those that stand under
/// them, by indentation.
QStringList LinhasCom(const QString& texto, const QStringList& linhas);

/// The plan in a window of its own, beside the wizard: to be searched, kept as a file, printed. It goes when it is
/// closed and remembers nothing.
class TJanelaDoPlano : public QDialog {
    Q_OBJECT
  public:
    TJanelaDoPlano(TPlano plano, IDialogos& dialogos, QWidget* assistente);

  private:
    QLayout* Procura();
    QLayout* Botoes();
    void Filtra(const QString& texto);
    void Salva();
    void Imprime();

    TPlano plano_;
    QStringList linhas_;
    IDialogos& dialogos_;
    QLineEdit* edFiltro_;
    QLabel* lblLinhas_;
    TMemoDeLinhas* mPlano_;
};

}  // namespace wkd
