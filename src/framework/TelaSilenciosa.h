#pragma once

#include "Tela.h"

namespace wkd {

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
    void Memo2(std::string_view) override {}
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
    void SetLog(std::string_view, std::string_view, std::string_view) override {}

  private:
    TBarraSilenciosa atual_, geral_;
};

}  // namespace wkd
