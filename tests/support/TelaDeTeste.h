#pragma once

#include <algorithm>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "screen/Tela.h"

namespace wkd {

class TBarraDeTeste : public IBarra {
  public:
    void Define(int minimo, int maximo, int passo, int posicao) override {
        minimo_ = minimo;
        maximo_ = maximo;
        passo_ = passo;
        posicao_ = posicao;
    }
    void Posicao(int posicao) override { posicao_ = posicao; }
    int Posicao() const override { return posicao_; }
    int Minimo() const { return minimo_; }
    int Maximo() const { return maximo_; }
    int Passo() const { return passo_; }

  private:
    int minimo_ = 0, maximo_ = 100, passo_ = 1, posicao_ = 0;
};

/// Screen that records what the engine shows and logs, and answers its questions: with the answers queued, then as
/// nobody would.
class TTelaDeTeste : public ITela {
  public:
    struct TEntradaDeLog {
        std::string mensagem, tabela, acao;
    };

    std::vector<std::string> memo1, memo2, atuais, gerais, infos, perguntas, reconciliacoes, ocupados;
    std::vector<TEntradaDeLog> log;
    std::deque<bool> respostas;
    std::deque<TAcaoReconcilia> acoes;
    TBarraDeTeste atual, geral;
    bool ocupado = false;
    bool guardaRotulos = true;  // a test of memory wants none
    int mensagensServidas = 0;

    void Memo1(std::string_view linha) override { memo1.emplace_back(linha); }
    void Memo2(std::string_view linha) override { memo2.emplace_back(linha); }
    void LblAtual(std::string_view texto) override {
        if (guardaRotulos) atuais.emplace_back(texto);
    }
    void LblGeral(std::string_view texto) override { gerais.emplace_back(texto); }
    IBarra& PbAtual() override { return atual; }
    IBarra& PbGeral() override { return geral; }
    void MostraOcupado(std::string_view texto, int) override {
        ocupados.emplace_back(texto);
        ocupado = true;
    }
    void EscondeOcupado() override { ocupado = false; }
    void ProcessaMensagens() override { ++mensagensServidas; }
    void Informacao(std::string_view texto) override { infos.emplace_back(texto); }
    bool Confirmacao(std::string_view texto, bool semPessoa) override {
        perguntas.emplace_back(texto);
        return Proxima(respostas, semPessoa);
    }
    TAcaoReconcilia Reconcilia(std::string_view erro, TAcaoReconcilia semPessoa) override {
        reconciliacoes.emplace_back(erro);
        return Proxima(acoes, semPessoa);
    }
    void SetLog(std::string_view mensagem, std::string_view tabela, std::string_view acao) override {
        log.push_back({std::string(mensagem), std::string(tabela), std::string(acao)});
    }

    /// Whether one of the lines holds the text.
    static bool Contem(const std::vector<std::string>& linhas, std::string_view texto) {
        return std::ranges::any_of(linhas,
                                   [&](const std::string& linha) { return linha.find(texto) != std::string::npos; });
    }
    bool LogContem(std::string_view texto) const {
        return std::ranges::any_of(
            log, [&](const TEntradaDeLog& entrada) { return entrada.mensagem.find(texto) != std::string::npos; });
    }

  private:
    template <class T>
    static T Proxima(std::deque<T>& fila, T senao) {
        if (fila.empty()) return senao;
        const T resposta = fila.front();
        fila.pop_front();
        return resposta;
    }
};

}  // namespace wkd
