#pragma once

#include <QPointer>
#include <chrono>
#include <string>

#include "Dialogos.h"
#include "Estimativa.h"
#include "LinhaDoTerminal.h"
#include "LogDaExecucao.h"
#include "PaginaStatus.h"
#include "PainelOcupado.h"
#include "Tela.h"

namespace wkd {

/// Progress of a run, shown on a bar when the screen is drawn.
class TBarraDaTela : public IBarra {
  public:
    void Define(int minimo, int maximo, int passo, int posicao) override;
    void Posicao(int posicao) override;
    int Posicao() const override { return posicao_; }
    int Maximo() const { return maximo_; }
    void Mostra(QProgressBar& barra);
    const TEstimativa& Estimativa() const { return estimativa_; }

  private:
    int minimo_ = 0, maximo_ = 100, posicao_ = 0;
    bool mudou_ = false;
    TEstimativa estimativa_;
};

/// Text of a label, shown when the screen is drawn.
class TRotuloDaTela {
  public:
    void Texto(std::string_view texto);
    const std::string& Texto() const { return texto_; }
    void Mostra(QLabel& rotulo);

  private:
    std::string texto_;
    bool mudou_ = false;
};

/// The engine's screen: the status page of the window, its dialogs, and the run log. What a run writes row by row is
/// kept and drawn at most every `kIntervalo`.
/// Unattended nothing waits for a person: lines go to the console too, an information becomes a line of the error
/// list and a log entry, a question takes its unattended answer. On a terminal one more line shows the progress.
class TTelaDaJanela : public ITela {
  public:
    static constexpr std::chrono::milliseconds kIntervalo{40};
    static constexpr std::chrono::milliseconds kIntervaloNoTerminal{250};

    TTelaDaJanela(TLogDaExecucao& log, IDialogos& dialogos, bool desassistida)
        : log_(log), dialogos_(dialogos), desassistida_(desassistida) {}

    /// From now on lines are shown here.
    void Liga(TPaginaStatus& status, TPainelOcupado& ocupado);
    bool Desassistida() const { return desassistida_; }
    /// Whether the error list or the log got anything.
    bool HouveErro() const { return houveErro_; }
    /// Shows all that is kept.
    void Descarrega();

    void Memo1(std::string_view linha) override;
    void Memo2(std::string_view linha) override;
    void LblAtual(std::string_view texto) override { lblAtual_.Texto(texto); }
    void LblGeral(std::string_view texto) override { lblGeral_.Texto(texto); }
    IBarra& PbAtual() override { return pbAtual_; }
    IBarra& PbGeral() override { return pbGeral_; }
    void MostraOcupado(std::string_view texto, int percentual) override;
    void EscondeOcupado() override;
    void ProcessaMensagens() override;
    void Informacao(std::string_view texto) override;
    bool Confirmacao(std::string_view texto, bool semPessoa) override;
    TAcaoReconcilia Reconcilia(std::string_view erro, TAcaoReconcilia semPessoa) override;
    /// A log file that cannot be written is reported once; its entries stay in memory for the next write.
    void SetLog(std::string_view mensagem, std::string_view tabela, std::string_view acao) override;

  private:
    void MostraAndamento();

    TLogDaExecucao& log_;
    IDialogos& dialogos_;
    bool desassistida_;
    QPointer<TPaginaStatus> status_;
    QPointer<TPainelOcupado> ocupado_;
    TBarraDaTela pbAtual_, pbGeral_;
    TRotuloDaTela lblAtual_, lblGeral_;
    TLinhaDoTerminal linha_;
    bool logMudou_ = false;
    bool logFalhou_ = false;
    bool houveErro_ = false;
    std::chrono::steady_clock::time_point proxima_{}, proximaLinha_{};
};

}  // namespace wkd
