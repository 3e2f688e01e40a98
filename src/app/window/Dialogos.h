#pragma once

#include <QString>

#include "screen/Tela.h"

namespace wkd {

/// What the window asks of the person in front of it and of the desktop. Paths are empty when cancelled.
class IDialogos {
  public:
    virtual ~IDialogos() = default;

    virtual void Informacao(const QString& texto) = 0;
    /// True for Yes.
    virtual bool Confirmacao(const QString& texto) = 0;
    virtual TAcaoReconcilia Reconcilia(const QString& erro) = 0;

    virtual QString ArquivoParaAbrir() = 0;
    /// Backup file of a database.
    virtual QString BackupParaAbrir() = 0;
    virtual QString ArquivoParaGravar(const QString& proposto) = 0;
    /// A folder, which may be made in the dialog.
    virtual QString Pasta(const QString& atual) = 0;
    /// Opens the file with the desktop's own program.
    virtual void Abre(const QString& arquivo) = 0;
};

/// The real dialogs, in Portuguese. Each comes to the foreground with the window that it belongs to.
class TDialogosQt : public IDialogos {
  public:
    void Informacao(const QString& texto) override;
    bool Confirmacao(const QString& texto) override;
    TAcaoReconcilia Reconcilia(const QString& erro) override;
    QString ArquivoParaAbrir() override;
    QString BackupParaAbrir() override;
    QString ArquivoParaGravar(const QString& proposto) override;
    QString Pasta(const QString& atual) override;
    void Abre(const QString& arquivo) override;
};

}  // namespace wkd
