#pragma once

#include <QWidget>
#include <string>
#include <vector>

#include "run/Contexto.h"
#include "run/UsuariosOnline.h"

class QLabel;
class QLineEdit;
class QTableWidget;

namespace wkd {

class TListaDeAlias;
struct TDadosDoAlias;

/// Page "alias": which database, and who is connected to it.
class TPaginaAlias : public QWidget {
    Q_OBJECT
  public:
    TPaginaAlias();

    void Lista(const std::vector<std::string>& aliases, const QString& arquivoIni);
    void Escolhe(const QString& alias);
    /// Empty as long as none is chosen.
    QString Alias() const;
    void EscondeUsuarios();
    void Mostra(const TDadosDoAlias& dados);

  signals:
    /// The list of aliases was closed or left.
    void Escolhido();

  private:
    TListaDeAlias* edAlias_;
    QLineEdit* edCaminhoBanco_;
    QLabel* lblNumUsuarios_;
    QTableWidget* gridUsuariosOnline_;
};

/// What the alias page shows of the chosen alias.
struct TDadosDoAlias {
    std::string numUsuarios;  // or "-1 (Versão HBN3)"
    std::vector<TUsuarioOnline> usuarios;
    std::string caminhoBanco;
    bool usuariosOnline = false;    // the database has its table of connected users
    std::string erro;               // why the alias could not be opened; empty otherwise
    bool outraAtualizacao = false;  // which has the database file: that is why
};

/// Opens the alias on the data module's connection and lists its connected users; sets the online-users flag.
TDadosDoAlias PreencheDados(TDataModulo& dm, TEstado& estado, const std::string& alias);

}  // namespace wkd
