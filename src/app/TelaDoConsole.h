#pragma once

#include "Eco.h"
#include "Tela.h"

namespace wkd {

class TBarraDoConsole : public IBarra {
  public:
    void Define(int, int, int, int posicao) override { posicao_ = posicao; }
    void Posicao(int posicao) override { posicao_ = posicao; }
    int Posicao() const override { return posicao_; }

  private:
    int posicao_ = 0;
};

/// Screen of a command that only reads: what fails goes to standard error, everything else nowhere.
class TTelaDoConsole : public ITela {
  public:
    void Memo1(std::string_view) override {}
    void Memo2(std::string_view linha) override { EscreveNosErros(linha); }
    void LblAtual(std::string_view) override {}
    void LblGeral(std::string_view) override {}
    IBarra& PbAtual() override { return atual_; }
    IBarra& PbGeral() override { return geral_; }
    void MostraOcupado(std::string_view, int) override {}
    void EscondeOcupado() override {}
    void ProcessaMensagens() override {}
    void Informacao(std::string_view texto) override { EscreveNosErros(texto); }
    bool Confirmacao(std::string_view, bool semPessoa) override { return semPessoa; }
    TAcaoReconcilia Reconcilia(std::string_view, TAcaoReconcilia semPessoa) override { return semPessoa; }
    void SetLog(std::string_view, std::string_view, std::string_view) override {}

  private:
    TBarraDoConsole atual_, geral_;
};

}  // namespace wkd
