#pragma once

#include "Dialogos.h"

namespace wkd {

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
