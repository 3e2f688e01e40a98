#pragma once

#include <QComboBox>
#include <QDir>
#include <QFocusEvent>
#include <QGuiApplication>
#include <QListWidget>
#include <QTimer>
#include <QWidget>
#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class QCheckBox;
class QGroupBox;
class QPlainTextEdit;
class QRadioButton;

namespace wkd {

/// Pick-only list that tells when it was closed or left. Whoever leaves it by a click gets the click done first: what
/// is told may open a connection, and clicks made meanwhile count for nothing.
class TListaDeAlias : public QComboBox {
    Q_OBJECT
  public:
    void showPopup() override {
        aberta_ = true;
        QComboBox::showPopup();
    }
    /// Called by the toolkit also where no list is open, such as when the page or the window goes out of sight.
    void hidePopup() override {
        QComboBox::hidePopup();
        if (!std::exchange(aberta_, false)) return;
        // The clicked line becomes the current one only after the list is closed.
        QMetaObject::invokeMethod(this, &TListaDeAlias::CloseUp, Qt::QueuedConnection);
    }

    /// Tells now what is still to be told.
    void ConcluiSaida() {
        if (std::exchange(saiu_, false)) emit Exit();
    }

  signals:
    void CloseUp();
    void Exit();

  protected:
    void focusOutEvent(QFocusEvent* evento) override {
        QComboBox::focusOutEvent(evento);
        const Qt::FocusReason motivo = evento->reason();
        if (aberta_ || motivo == Qt::PopupFocusReason || motivo == Qt::ActiveWindowFocusReason) return;
        saiu_ = true;
        EsperaSoltar();
    }

  private:
    void EsperaSoltar() {
        if (QGuiApplication::mouseButtons() == Qt::NoButton) return ConcluiSaida();
        QTimer::singleShot(std::chrono::milliseconds(20), this, [this] { EsperaSoltar(); });
    }

    bool aberta_ = false;
    bool saiu_ = false;  // and nobody knows yet
};

/// Names of the files of one folder that match a mask, letter case ignored.
class TListaDeArquivos : public QListWidget {
    Q_OBJECT
  public:
    explicit TListaDeArquivos(const QString& mascara) : mascara_(mascara) {}

    void Lista(const QString& pasta) {
        clear();
        addItems(QDir(pasta).entryList({mascara_}, QDir::Files, QDir::Name | QDir::IgnoreCase));
    }

  private:
    QString mascara_;
};

/// Folders on the way to the chosen one, which comes last.
class TListaDePastas : public QListWidget {
    Q_OBJECT
  public:
    void Escolhe(const QString& pasta) {
        clear();
        for (QDir acima(pasta); count() == 0 || acima.cdUp();) insertItem(0, acima.dirName());
        emit Escolhida(pasta);
    }

  signals:
    void Escolhida(const QString& pasta);
};

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
    /// Chooses those that Le then gives.
    void Marca(const TOpcoes& opcoes);

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
    void TiraTabela();
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
