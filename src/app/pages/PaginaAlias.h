#pragma once

#include <QWidget>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "commands/PreencheDados.h"

class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTableWidget;

namespace wkd {

class TListaDeAlias;

/// Page "alias": which database, and who is connected to it.
class TPaginaAlias : public QWidget {
    Q_OBJECT
  public:
    /// What is said of the last update of an alias.
    using TUltima = std::function<std::string(const std::string& alias)>;

    explicit TPaginaAlias(TUltima ultima);
    /// Makes what is out of sight at first. What shows it does so, too.
    void Completa() { Detalhes(); }

    void Lista(const std::vector<std::string>& aliases, const QString& arquivoIni);
    void Escolhe(const QString& alias);
    bool Vazia() const;
    /// A list that was left by the mouse tells of it when the button is up, or now.
    void ConcluiSaida();
    /// Empty as long as none is chosen.
    QString Alias() const;
    /// Until another alias is shown.
    void EscondeUsuarios();
    void Mostra(const TDadosDoAlias& dados);
    const TDadosDoAlias& Mostrado() const { return dados_; }
    /// Those whose lines are selected, else all.
    std::vector<TUsuarioOnline> UsuariosEscolhidos();
    /// A text in the place of the users; empty for none.
    void Explica(const QString& texto);

  signals:
    /// The list of aliases was closed or left.
    void Escolhido();
    void Novo();
    void Alterar();
    void Liberar();

  protected:
    /// There may have been an update meanwhile.
    void showEvent(QShowEvent* evento) override;

  private:
    /// Who is connected, or why nobody can be.
    struct TDetalhes {
        QTableWidget* usuarios;
        QPlainTextEdit* erro;
        QLabel* quantos;
        QTableWidget* conectados;
    };

    TDetalhes& Detalhes();
    void FazDetalhes();
    QLayout* Numero();
    void MostraUltima();
    void ReparteAltura();

    TUltima ultima_;
    TDadosDoAlias dados_;
    TListaDeAlias* edAlias_;
    QPushButton* btAlterar_;
    QLineEdit* edCaminhoBanco_;
    QLabel* lblUltima_;
    QLabel* lblNumUsuarios_;
    QPushButton* btReler_;
    QPushButton* btLiberar_;
    QLabel* lblUsuarios_;
    std::optional<TDetalhes> detalhes_;
};

}  // namespace wkd
