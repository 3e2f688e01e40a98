#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "AcaoDaTabela.h"
#include "Valor.h"

namespace wkd {

struct TComandoRegistrado {
    std::string texto;
    std::string executado;  // the form of it that the server took, when that was another one
    std::string erro;       // empty: it ran
};

struct TTabelaRegistrada {
    std::string nome;
    TAcaoDaTabela acao = TAcaoDaTabela::Nada;
    std::string motivo;
    std::vector<TComandoRegistrado> comandos;
    std::optional<std::int64_t> antes, depois;  // rows; nothing where they were not counted
    std::string hash;                           // of its content afterwards; empty: not computed
    double segundos = 0;
};

struct TPassoRegistrado {
    std::string nome;
    double segundos = 0;
    std::string erro;
};

struct TErroRegistrado {
    TDataHora quando;
    std::string tabela, acao, mensagem;
};

/// What one run did, collected while it does it.
struct TEvidencia {
    std::string alias, banco, servidor, pacote;
    TDataHora inicio, fim;
    bool concluida = false;  // all steps ran, whatever they reported
    std::vector<TTabelaRegistrada> tabelas;
    std::vector<TPassoRegistrado> passos;
    std::vector<TPassoRegistrado> correcoes;  // those whose turn it was
    std::vector<TErroRegistrado> erros;

    /// A statement of the table under way.
    void Comando(TComandoRegistrado comando) {
        if (!tabelas.empty()) tabelas.back().comandos.push_back(std::move(comando));
    }
};

}  // namespace wkd
