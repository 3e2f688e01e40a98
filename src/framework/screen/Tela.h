#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "values/Erros.h"
#include "values/Valor.h"

namespace wkd {

/// A failure on its way out of the engine: what failed, where, and how it is told.
struct TErroDaExecucao {
    /// Entry of the run log, in its own words.
    struct TEntrada {
        std::string mensagem, tabela, acao;
    };

    TErro erro;
    std::string tabela, acao;
    std::string linha = {};                // of the error list; empty: none
    std::optional<TEntrada> entrada = {};  // nothing: none
    bool caixa = false;                    // a box tells the message; unattended, list and log do
    TDataHora quando = {};
    bool consequencia = false;  // of an error before it, such as the loss of the connection

    /// In list and log.
    static TErroDaExecucao NosDois(TErro erro, std::string_view tabela, std::string_view acao);
    static TErroDaExecucao NosDois(TErro erro, std::string_view tabela, std::string_view acao, std::string linha);
    static TErroDaExecucao NoLog(TErro erro, std::string_view tabela, std::string_view acao);
    /// In the list alone. `mensagem` is the line.
    static TErroDaExecucao NaLista(TErro erro, std::string_view tabela);
    static TErroDaExecucao NaCaixa(TErro erro, std::string_view tabela = {});
    /// The log entry is followed by the statement.
    TErroDaExecucao ComComando(std::string_view comando) &&;
};

/// What to do with a row that the server refused.
enum class TAcaoReconcilia { Pula, Cancela, Aborta };

/// Progress bar.
class IBarra {
  public:
    virtual ~IBarra() = default;
    virtual void Define(int minimo, int maximo, int passo, int posicao) = 0;
    virtual void Posicao(int posicao) = 0;
    virtual int Posicao() const = 0;
};

/// The only way out of the engine: what a pass shows, asks and logs. Implemented by the wizard and by tests.
class ITela {
  public:
    virtual ~ITela() = default;

    /// Line of the status list.
    virtual void Memo1(std::string_view linha) = 0;

    /// Tells a failure in the error list and the run log, as far as it says, and keeps it.
    void Erro(TErroDaExecucao erro);
    /// Keeps one that has been told otherwise.
    void Guarda(TErroDaExecucao erro);
    /// Those kept since they were last taken.
    const std::vector<TErroDaExecucao>& Erros() const { return erros_; }
    std::vector<TErroDaExecucao> RetiraErros() { return std::exchange(erros_, {}); }

    virtual void LblAtual(std::string_view texto) = 0;
    virtual void LblGeral(std::string_view texto) = 0;
    virtual IBarra& PbAtual() = 0;
    virtual IBarra& PbGeral() = 0;

    /// Busy indicator; `percentual` below 0 shows none.
    virtual void MostraOcupado(std::string_view texto, int percentual) = 0;
    virtual void EscondeOcupado() = 0;
    /// Beside the progress while the server does not answer; empty when it does again. Called by another thread.
    virtual void SemResposta(std::string_view /*texto*/) {}
    /// The folder that the package's files are read from.
    virtual void PastaDoPacote(const std::filesystem::path& /*pasta*/) {}
    /// Serves pending window messages.
    virtual void ProcessaMensagens() = 0;

    virtual void Informacao(std::string_view texto) = 0;
    /// True for Yes. Unattended runs answer `semPessoa`.
    virtual bool Confirmacao(std::string_view texto, bool semPessoa) = 0;
    virtual TAcaoReconcilia Reconcilia(std::string_view erro, TAcaoReconcilia semPessoa) = 0;

  protected:
    virtual void Relata(const TErroDaExecucao& erro);
    /// Line of the error list, and entry of the run log.
    virtual void Memo2(std::string_view linha) = 0;
    virtual void SetLog(std::string_view mensagem, std::string_view tabela, std::string_view acao) = 0;

  private:
    std::vector<TErroDaExecucao> erros_;
};

/// Hides the busy indicator at the end of a scope, also when it is left by an error.
class TOcupado {
  public:
    TOcupado(ITela& tela, std::string_view texto) : tela_(tela) { tela_.MostraOcupado(texto, -1); }
    ~TOcupado() { tela_.EscondeOcupado(); }
    TOcupado(const TOcupado&) = delete;
    TOcupado& operator=(const TOcupado&) = delete;

  private:
    ITela& tela_;
};

class TBarraSilenciosa : public IBarra {
  public:
    void Define(int, int, int, int posicao) override { posicao_ = posicao; }
    void Posicao(int posicao) override { posicao_ = posicao; }
    int Posicao() const override { return posicao_; }

  private:
    int posicao_ = 0;
};

/// Screen that shows nothing and answers as nobody would; who derives from it shows what counts.
class TTelaSilenciosa : public ITela {
  public:
    void Memo1(std::string_view) override {}
    void LblAtual(std::string_view) override {}
    void LblGeral(std::string_view) override {}
    IBarra& PbAtual() override { return atual_; }
    IBarra& PbGeral() override { return geral_; }
    void MostraOcupado(std::string_view, int) override {}
    void EscondeOcupado() override {}
    void ProcessaMensagens() override {}
    void Informacao(std::string_view) override {}
    bool Confirmacao(std::string_view, bool semPessoa) override { return semPessoa; }
    TAcaoReconcilia Reconcilia(std::string_view, TAcaoReconcilia semPessoa) override { return semPessoa; }

  protected:
    void Memo2(std::string_view) override {}
    void SetLog(std::string_view, std::string_view, std::string_view) override {}

  private:
    TBarraSilenciosa atual_, geral_;
};

}  // namespace wkd
