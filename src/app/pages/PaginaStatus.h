#pragma once

#include <QFrame>
#include <QPlainTextEdit>
#include <QWidget>
#include <functional>

class QLabel;
class QProgressBar;
class QGroupBox;
class QLabel;
class QProgressBar;
class QCheckBox;
class QPushButton;

namespace wkd {

/// Read-only list of lines, the newest one in view.
class TMemoDeLinhas : public QPlainTextEdit {
  public:
    explicit TMemoDeLinhas(QWidget* pai = nullptr);

    /// Adds lines at the end, many at once faster than one by one.
    void Acrescenta(const QStringList& linhas);
};

/// Busy indicator over the middle of the window: a text, and a bar where the progress is known.
class TPainelOcupado : public QFrame {
  public:
    explicit TPainelOcupado(QWidget* janela);

    /// A `percentual` below 0 shows a bar that only moves.
    void Mostra(const QString& texto, int percentual);
    /// A button "Cancelar" that calls this, once; none without it.
    void OfereceCancelar(std::function<void()> cancela);
    QPushButton& Cancelar() { return *cancelar_; }

  private:
    QLabel* texto_;
    QProgressBar* barra_;
    QPushButton* cancelar_;
    std::function<void()> cancela_;
};

class IDialogos;
class TListaDePastas;

/// How a run ended.
struct TFimMostrado {
    QString veredicto = {};  // empty: none has ended
    bool certo = false;
    QString providencia = {};  // the next thing to do; empty: none
    bool parada = false;       // the wizard stays as it is until it is closed
    QString relatorio = {};    // file; empty: not written
};

/// Page "status": what the run does, its errors, its progress, and out of sight the run log.
class TPaginaStatus : public QWidget {
    Q_OBJECT
  public:
    explicit TPaginaStatus(IDialogos& dialogos);

    TMemoDeLinhas& Memo1() { return *memo1_; }
    TMemoDeLinhas& Memo2() { return *memo2_; }
    QLabel& LblAtual() { return *lblAtual_; }
    QLabel& LblGeral() { return *lblGeral_; }
    QProgressBar& PbAtual() { return *pbAtual_; }
    QProgressBar& PbGeral() { return *pbGeral_; }
    /// How far the run is, beside the bars.
    void Estimativa(const QString& texto);
    /// Offers the plan, once there is a package to plan with.
    void OferecePlano();
    void PermitePlano(bool sim);
    /// Whether the update waits for a backup that was proven.
    bool ComBackup() const;
    void SetComBackup(bool sim);
    /// The line with the verdict, and the ways to report and log; out of sight while no run has ended.
    void MostraFim(const TFimMostrado& fim);
    /// The text of the run log, and more of it at its top.
    void MostraLog(const QString& texto);
    void AcrescentaAoLog(const QString& topo);
    /// The folder whose package files the hidden list holds; an empty one changes nothing.
    void MostraPasta(const QString& pasta);

  signals:
    void Atualizar();
    void Planejar();
    void Ensaiar();
    void VerificarIndices();
    void Log();

  private:
    QWidget* Erros();
    QWidget* Andamento();
    QWidget* Fim();
    /// Controls out of sight, kept for those who drive the window by name.
    void Escondidos();
    void SpeedButton2Click();

    IDialogos& dialogos_;
    TMemoDeLinhas* memo1_;
    TMemoDeLinhas* memo2_;
    QPlainTextEdit* memoLog_;
    TListaDePastas* pastas_;
    QPushButton* btPlano_;
    QPushButton* btEnsaio_;
    QCheckBox* cbComBackup_;
    QLabel* lblAtual_;
    QLabel* lblGeral_;
    QLabel* lblEstimativa_;
    QLabel* lblVeredicto_;
    QLabel* lblProvidencia_;
    QPushButton* btRelatorio_;
    QWidget* fim_ = nullptr;
    QString relatorio_;
    QProgressBar* pbAtual_;
    QProgressBar* pbGeral_;
};

}  // namespace wkd
