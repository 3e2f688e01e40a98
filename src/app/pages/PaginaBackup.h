#pragma once

#include <QWidget>
#include <filesystem>

#include "aliases/Aliases.h"

class QCheckBox;
class QLineEdit;
class QPushButton;

namespace wkd {

class IDialogos;
class ITela;

/// Page "backup": where the backup goes and where it is restored for a test.
class TPaginaBackup : public QWidget {
    Q_OBJECT
  public:
    TPaginaBackup(const TAliases& aliases, std::filesystem::path pastaPrograma, IDialogos& dialogos, ITela& tela);

    /// Alias whose settings the defaults come from. A remembered folder is ready to be used.
    void SetAlias(const QString& alias);

    std::filesystem::path Pasta() const;
    /// The database to restore into, as the driver names it, and whether it is the one in use.
    std::string Destino() const;
    bool NaBaseOriginal() const;
    /// Whether it is the alias's own test copy.
    bool NaCopiaDeTeste() const;
    /// The backup to restore: the one just made, or the one that the person chooses; empty when none was chosen.
    std::filesystem::path Arquivo();
    /// From now on it may be restored into the test copy.
    void BackupFeito(const std::filesystem::path& arquivo);

  signals:
    void FazerBackup();
    void Restaurar();

  private:
    QWidget* GrupoDoDestino();
    QWidget* GrupoRestaurar();
    QWidget* Relatorios();
    void MostraDestino(bool naBaseOriginal);
    void cbRestaurarClick(bool marcado);
    void Button2Click();
    void SpeedButton4Click();
    void SpeedButton5Click();
    void btRelatoriosBkpClick();
    void PastaEscolhida(const QString& pasta);

    TAliases aliases_;
    std::filesystem::path pastaPrograma_;
    IDialogos& dialogos_;
    ITela& tela_;
    QString alias_;
    std::filesystem::path feito_;  // the backup just made
    QLineEdit* edCaminhoBackup_;
    QLineEdit* edServerRest_;
    QLineEdit* edBancoRest_;
    QLineEdit* edRelatoriosBkp_;
    QCheckBox* cbRestaurar_;
    QPushButton* btExecutaBackup_;
    QPushButton* btRestauraBackup_;
};

}  // namespace wkd
