#pragma once

#include <QWidget>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

class QCheckBox;
class QGroupBox;
class QPlainTextEdit;
class QRadioButton;

namespace wkd {

class IDialogos;
class TComboMaiusculo;
struct TOpcoes;

/// Page "opcoes": which tables, and how thoroughly.
class TPaginaOpcoes : public QWidget {
    Q_OBJECT
  public:
    using TExisteTabela = std::function<bool(std::string_view)>;
    TPaginaOpcoes(TExisteTabela existeTabela, IDialogos& dialogos);

    /// Offers the business tables among the names: those that begin with "T".
    void Oferece(const std::vector<std::string>& tabelas);
    /// Writes the options as chosen into the run's.
    void Le(TOpcoes& opcoes) const;

  private:
    QWidget* Todas();
    QWidget* Querys();
    QWidget* Selecionadas();
    QWidget* Modo();
    bool LiberaSelecionadas();
    void LimpaSelecionadas();
    void cbTabelaClick();
    void cbAtualizaTodasClick();
    void cbCompletoClick();
    void BitBtn1Click();
    QStringList Listadas() const;

    TExisteTabela existeTabela_;
    IDialogos& dialogos_;
    QCheckBox* cbAtualizaTodas_;
    QCheckBox* cbCompleto_;
    QCheckBox* chkQuerysAnteriores_;
    QCheckBox* chkQuerysPosteriores_;
    QCheckBox* cbTabela_;
    TComboMaiusculo* edTabela_;
    QPlainTextEdit* mListaTabelas_;
    QGroupBox* gbSelecionadas_;
    QGroupBox* rgModoAtualizacao_;
    QRadioButton* modoNormal_;
    QRadioButton* modoCompleto_;
};

}  // namespace wkd
