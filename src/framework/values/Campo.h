#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "values/Valor.h"

namespace wkd {

/// Column of a result set, of a dataset or of a data packet.
struct TCampo {
    std::string nome;
    TTipoDado tipo = TTipoDado::Texto;
    int tamanho = 0;  // characters of a text, bytes of Bytes, digits of a decimal, 0 otherwise
    int escala = 0;   // decimal places
    bool requerido = false;
};

using TLinha = std::vector<TValor>;

/// Position of the field of that name, letter case ignored; -1 when there is none.
int IndiceDoCampo(const std::vector<TCampo>& campos, std::string_view nome);

/// Rows in memory, each as long as `campos`.
struct TTabelaEmMemoria {
    std::vector<TCampo> campos;
    std::vector<TLinha> linhas;
};

/// Rows that stand elsewhere, and must outlive it.
struct TLinhasVistas {
    const std::vector<TCampo>* campos;
    std::vector<const TLinha*> linhas;

    TLinhasVistas(const std::vector<TCampo>& deCampos, std::vector<const TLinha*> vistas)
        : campos(&deCampos), linhas(std::move(vistas)) {}
    TLinhasVistas(const TTabelaEmMemoria& tabela) : campos(&tabela.campos) {
        for (const TLinha& linha : tabela.linhas) linhas.push_back(&linha);
    }
};

}  // namespace wkd
