#pragma once

#include <QWidget>
#include <filesystem>

class QLineEdit;

namespace wkd {

class IDialogos;

/// Page "atualizacao": which package.
class TPaginaAtualizacao : public QWidget {
    Q_OBJECT
  public:
    explicit TPaginaAtualizacao(IDialogos& dialogos);

    std::filesystem::path Pacote() const;
    void SetPacote(const std::filesystem::path& pacote);
    /// Puts the cursor into the box with all its text selected.
    void Corrige();

  private:
    void SpeedButton3Click();

    IDialogos& dialogos_;
    QLineEdit* edAtualizacao_;
};

}  // namespace wkd
