#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Connection.h"
#include "Renumeracao.h"

namespace wkd {

/// Column of the target of a copy and where its value comes from.
struct TColunaDaCopia {
    TColunaFisica destino;
    std::optional<TColunaFisica> origem;  // none: every row gets `fixo`
    std::size_t lugar = 0;                // among the columns of the source that are read
    TValor fixo;
    bool numerada = false;  // a row without a value gets a number
};

/// Columns that a copy writes: those common to both tables, and those of the target alone that are numbered or would be
/// refused without a value (required, no usable default).
std::vector<TColunaDaCopia> ColunasDaCopia(TConnection& conexao, const std::string& origem, const std::string& destino,
                                           const TRenumeracao& renumeracao);

/// Names as statements take them.
std::string ListaDaOrigem(const std::vector<TColunaDaCopia>& colunas, TTipoBanco banco);
std::string ComandoInsere(const std::string& destino, const std::vector<TColunaDaCopia>& colunas, TTipoBanco banco);

/// The value as the target takes it. Throws TErroConversao when it cannot hold the value whole.
TValor ConverteParaColuna(const TValor& valor, const TColunaFisica& coluna);

/// Whether a text moves into a column of bytes: these are then the bytes that the text's own column holds.
bool TextoViraBytes(const TColunaDaCopia& coluna);
TValor BytesDoTexto(const TValor& valor, const TColunaFisica& origem);

}  // namespace wkd
