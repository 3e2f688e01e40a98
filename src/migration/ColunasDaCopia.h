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

/// The column in a select list. A text blob is read as its bytes: by itself the server would turn it into the
/// connection's character set.
std::string Lida(const TColunaFisica& coluna, TTipoBanco banco, const std::string& apelido = {});
/// As statements take them.
std::string ListaDaOrigem(const std::vector<TColunaDaCopia>& colunas, TTipoBanco banco);
std::string ComandoInsere(const std::string& destino, const std::vector<TColunaDaCopia>& colunas, TTipoBanco banco);

/// The value as the target takes it. Throws TErroConversao when it cannot hold the value whole.
TValor ConverteParaColuna(const TValor& valor, const TColunaFisica& coluna);

/// A value, read as Lida has it, as it goes to another column. Blobs pass byte by byte. A text becomes the bytes
/// that its own column holds, or those of the text blob's character set; a text blob becomes text by its own set.
TValor ValorNaPassagem(const TValor& valor, const TColunaFisica& origem, const TColunaFisica& destino);

}  // namespace wkd
