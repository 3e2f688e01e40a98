#pragma once

#include <string>

#include "LogDaExecucao.h"
#include "Tela.h"

namespace wkd {

/// Screen of the unattended run: the status list on standard output, the error list on standard error, both UTF-8.
/// Nothing waits for a person: an information becomes a line of the error list and a log entry, a question takes its
/// unattended answer. A stream that nobody reads any more ends nothing.
class TTelaConsole : public ITela {
  public:
    explicit TTelaConsole(TLogDaExecucao& log) : log_(log) {}

    void Memo1(std::string_view linha) override;
    void Memo2(std::string_view linha) override;
    void LblAtual(std::string_view) override {}
    void LblGeral(std::string_view) override {}
    IBarra& PbAtual() override { return barraAtual_; }
    IBarra& PbGeral() override { return barraGeral_; }
    void MostraOcupado(std::string_view, int) override {}
    void EscondeOcupado() override {}
    void ProcessaMensagens() override {}
    void Informacao(std::string_view texto) override;
    bool Confirmacao(std::string_view texto, bool semPessoa) override;
    TAcaoReconcilia Reconcilia(std::string_view erro, TAcaoReconcilia semPessoa) override;
    /// A log file that cannot be written is reported once; its entries stay in memory for the next write.
    void SetLog(std::string_view mensagem, std::string_view tabela, std::string_view acao) override;

    /// Whether the error list or the log got anything.
    bool HouveErro() const { return houveErro_; }

  private:
    class TBarra : public IBarra {
      public:
        void Define(int, int, int, int posicao) override { posicao_ = posicao; }
        void Posicao(int posicao) override { posicao_ = posicao; }
        int Posicao() const override { return posicao_; }

      private:
        int posicao_ = 0;
    };

    TLogDaExecucao& log_;
    TBarra barraAtual_, barraGeral_;
    bool houveErro_ = false;
    bool logFalhou_ = false;
};

}  // namespace wkd
