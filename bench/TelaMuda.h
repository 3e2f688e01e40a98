#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Tela.h"

namespace wkd {

/// Screen that shows nothing, tells of every status line, and keeps what went wrong.
class TTelaMuda : public ITela {
  public:
    std::function<void(std::string_view)> aoMostrar = [](std::string_view) {};
    std::vector<std::string> erros;

    void Memo1(std::string_view linha) override { aoMostrar(linha); }
    void Memo2(std::string_view linha) override { erros.emplace_back(linha); }
    void LblAtual(std::string_view) override {}
    void LblGeral(std::string_view) override {}
    IBarra& PbAtual() override { return barra_; }
    IBarra& PbGeral() override { return barra_; }
    void MostraOcupado(std::string_view, int) override {}
    void EscondeOcupado() override {}
    void ProcessaMensagens() override {}
    void Informacao(std::string_view texto) override { erros.emplace_back(texto); }
    bool Confirmacao(std::string_view, bool semPessoa) override { return semPessoa; }
    TAcaoReconcilia Reconcilia(std::string_view, TAcaoReconcilia semPessoa) override { return semPessoa; }
    void SetLog(std::string_view mensagem, std::string_view, std::string_view) override {
        erros.emplace_back(mensagem);
    }

  private:
    class TBarra : public IBarra {
      public:
        void Define(int, int, int, int posicao) override { posicao_ = posicao; }
        void Posicao(int posicao) override { posicao_ = posicao; }
        int Posicao() const override { return posicao_; }

      private:
        int posicao_ = 0;
    };
    TBarra barra_;
};

}  // namespace wkd
