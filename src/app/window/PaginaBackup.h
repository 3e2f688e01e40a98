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

    /// Alias whose settings the defaults come from.
    void SetAlias(const QString& alias) { alias_ = alias; }

  private:
    QWidget* Destino();
    QWidget* Restaurar();
    QWidget* Relatorios();
    void MostraDestino(bool naBaseOriginal);
    void cbRestaurarClick(bool marcado);
    void Button2Click();
    void SpeedButton4Click();
    void SpeedButton5Click();
    void btRelatoriosBkpClick();

    TAliases aliases_;
    std::filesystem::path pastaPrograma_;
    IDialogos& dialogos_;
    ITela& tela_;
    QString alias_;
    QLineEdit* edCaminhoBackup_;
    QLineEdit* edServerRest_;
    QLineEdit* edBancoRest_;
    QLineEdit* edRelatoriosBkp_;
    QCheckBox* cbRestaurar_;
    QPushButton* btExecutaBackup_;
    QPushButton* btRestauraBackup_;
};

}  // namespace wkd
