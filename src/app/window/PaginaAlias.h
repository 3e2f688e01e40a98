#pragma once

#include <QWidget>
#include <string>
#include <vector>

#include "commands/PreencheDados.h"

class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QTableWidget;

namespace wkd {

class TListaDeAlias;

/// Page "alias": which database, and who is connected to it.
class TPaginaAlias : public QWidget {
    Q_OBJECT
  public:
    TPaginaAlias();

    void Lista(const std::vector<std::string>& aliases, const QString& arquivoIni);
    void Escolhe(const QString& alias);
    /// Empty as long as none is chosen.
    QString Alias() const;
    /// Until another alias is shown.
    void EscondeUsuarios();
    void Mostra(const TDadosDoAlias& dados);
    /// A text in the place of the users; empty for none.
    void Explica(const QString& texto);

  signals:
    /// The list of aliases was closed or left.
    void Escolhido();

  private:
    TListaDeAlias* edAlias_;
    QLineEdit* edCaminhoBanco_;
    QLabel* lblNumUsuarios_;
    QTableWidget* gridUsuariosOnline_;
    QPlainTextEdit* mErro_;
};

}  // namespace wkd
