#pragma once

#include <QPointer>
#include <QStringList>
#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "commands/Eco.h"
#include "commands/LinhaDoTerminal.h"
#include "pages/PaginaStatus.h"
#include "report/Estimativa.h"
#include "report/LogDaExecucao.h"
#include "screen/Tela.h"
#include "widgets/Dialogos.h"

class QLabel;
class QProgressBar;

namespace wkd {

// What a run tells row by row, from its own thread, and the window's thread shows when it draws.

/// Progress of a run, on a bar.
class TBarraDaTela : public IBarra {
  public:
    void Define(int minimo, int maximo, int passo, int posicao) override;
    void Posicao(int posicao) override;
    int Posicao() const override;
    int Maximo() const;
    /// How far the work is, how fast it goes, and how long it will still take.
    std::string Estimativa() const;
    void Mostra(QProgressBar& barra);

  private:
    void Anda(int posicao);

    mutable std::mutex guarda_;
    int minimo_ = 0, maximo_ = 100, posicao_ = 0;
    bool mudou_ = false;
    TEstimativa estimativa_;
};

/// Text of a label.
class TRotuloDaTela {
  public:
    void Texto(std::string_view texto);
    std::string Texto() const;
    void Mostra(QLabel& rotulo);

  private:
    mutable std::mutex guarda_;
    std::string texto_;
    bool mudou_ = false;
};

/// The engine's screen: the status page of the window, its dialogs, and the run log. The engine may call it from a
/// thread of its own: what it shows is kept and drawn by the window's thread `kIntervalo` later, so that a row costs
/// no drawing; its questions wait for the answer.
/// Unattended nothing waits for a person: lines go to the console too, an information becomes a line of the error
/// list and a log entry, a question takes its unattended answer. On a terminal one more line shows the progress.
class TTelaDaJanela : public ITela {
  public:
    static constexpr std::chrono::milliseconds kIntervalo{40};
    static constexpr std::chrono::milliseconds kIntervaloNoTerminal{250};

    TTelaDaJanela(TLogDaExecucao& log, IDialogos& dialogos, bool desassistida, bool silenciosa = false)
        : log_(log), dialogos_(dialogos), desassistida_(desassistida), silenciosa_(silenciosa) {}

    // Of the window's thread
    /// From now on lines are shown here.
    void Liga(TPaginaStatus& status, TPainelOcupado& ocupado);
    bool Desassistida() const { return desassistida_; }
    /// Whether the error list or the log got anything.
    bool HouveErro() const { return houveErro_; }
    /// Whether a run is under way, whose progress is to be shown.
    void EmAndamento(bool andando);
    /// Shows all that is kept.
    void Descarrega();
    // A log file that cannot be read or written stops nothing: it is reported once, and stays as it is.
    void CarregaLog();
    void SalvaLog();
    /// Empties the run log; its file stays until the next write.
    void LimparLog();

    void Memo1(std::string_view linha) override;
    void LblAtual(std::string_view texto) override { lblAtual_.Texto(texto); }
    void LblGeral(std::string_view texto) override { lblGeral_.Texto(texto); }
    IBarra& PbAtual() override { return pbAtual_; }
    IBarra& PbGeral() override { return pbGeral_; }
    void MostraOcupado(std::string_view texto, int percentual) override;
    void EscondeOcupado() override;
    void SemResposta(std::string_view texto) override;
    void PastaDoPacote(const std::filesystem::path& pasta) override;
    /// The window serves its messages by itself.
    void ProcessaMensagens() override { PedeDesenho(); }
    void Informacao(std::string_view texto) override;
    bool Confirmacao(std::string_view texto, bool semPessoa) override;
    TAcaoReconcilia Reconcilia(std::string_view erro, TAcaoReconcilia semPessoa) override;

  protected:
    void Relata(const TErroDaExecucao& erro) override;
    void Memo2(std::string_view linha) override;
    void SetLog(std::string_view mensagem, std::string_view tabela, std::string_view acao) override;

  private:
    struct TOcupadoDaTela {
        QString texto;  // empty: nothing is waited for
        int percentual = -1;
    };
    /// What was told since it was last shown.
    struct TNovidades {
        QStringList memo1, memo2;
        std::optional<TOcupadoDaTela> ocupado;
        QString pasta;  // of the package; empty: the same as before
        QString log;    // newest entry first
    };

    template <class F>
    void Anota(F&& anota);
    /// What an unattended run tells the console, clear of the progress line.
    template <class F>
    void NoConsole(F&& escreve);
    /// What is under way; empty outside a run.
    std::string Onde() const;
    template <class F>
    void NoLog(F&& operacao);
    void PedeDesenho();
    void Desenha(qsizetype linhasPorVez);
    TNovidades Retira(qsizetype linhasPorVez);
    void MostraAndamento();

    TLogDaExecucao& log_;
    IDialogos& dialogos_;
    bool desassistida_;
    bool silenciosa_;  // the console gets errors alone
    QPointer<TPaginaStatus> status_;
    QPointer<TPainelOcupado> ocupado_;
    TBarraDaTela pbAtual_, pbGeral_;
    TRotuloDaTela lblAtual_, lblGeral_, semResposta_;
    std::mutex console_;
    TLinhaDoTerminal linha_;  // behind console_, as the next
    TEcoDosErros erros_{EscreveNosErros};
    std::chrono::steady_clock::time_point proximaLinha_{};
    std::mutex guarda_;
    TNovidades novidades_;  // behind guarda_
    std::atomic<bool> desenhoPedido_ = false;
    std::atomic<bool> houveErro_ = false;
    bool logFalhou_ = false;
    std::atomic<bool> andando_ = false;
};

}  // namespace wkd
