#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "connection/Connection.h"
#include "dialect/Dialeto.h"
#include "rows/ClientDataSet.h"
#include "values/Texto.h"
#include "values/Valor.h"

namespace wkd {

/// What a required column gets when its value is missing: date and time when it is named "DATA" or "DT...", else "0";
/// a column that holds a date or a time, which "0" is not, gets them whatever its name.
inline TValor ValorObrigatorio(const TColunaFisica& coluna) {
    const std::string nome = Maiusculas(coluna.nome);
    const TDataHora agora = Agora();
    switch (coluna.tipo) {
        case TTipoDado::Data:
            return agora.data;
        case TTipoDado::Hora:
            return agora.hora;
        case TTipoDado::DataHora:
            return agora;
        case TTipoDado::Texto:
        case TTipoDado::Memo:
        case TTipoDado::Blob:
            if (nome != "DATA" && !nome.starts_with("DT")) return "0";
            return coluna.tamanho > 0 ? TValor(agora).ComoTexto().substr(0, static_cast<std::size_t>(coluna.tamanho))
                                      : TValor(agora).ComoTexto();
        default:
            return TValor("0").Converte(coluna.tipo);
    }
}

/// Whether a required column is without a value; blanks are one in a text.
inline bool SemValor(const TValor& valor, const TColunaFisica& coluna) {
    const bool texto = coluna.tipo == TTipoDado::Texto || coluna.tipo == TTipoDado::Memo ||
                       coluna.tipo == TTipoDado::Blob || coluna.tipo == TTipoDado::Bytes;
    return texto ? valor.Nulo() : valor.EmBranco();
}

/// Numbers for the auto-increment columns of one table whose rows hold none: 1, 2, ... per column, for one copy.
class TRenumeracao {
  public:
    /// Takes the required and key columns that count up from the package's rows of the table; leaves the dataset
    /// behind its last row.
    explicit TRenumeracao(TClientDataSet& satribNovo);
    /// For a copy that an earlier one has begun: each column goes on behind the largest number that the table holds.
    void Continua(TConnection& conexao, const std::string& tabela);

    /// Whether the column counts up, letter case ignored.
    bool Tem(std::string_view coluna) const;
    /// The value, or the column's next number in place of zero, NULL or empty text. Throws TErroConversao for what
    /// does not read as an integer.
    TValor Numera(std::string_view coluna, const TValor& valor);

    /// The last number that the column has given. Others may give the next ones on their own account.
    std::int64_t Ultimo(std::string_view coluna) { return Contador(coluna).ultimo; }
    void Avanca(std::string_view coluna, std::int64_t quantos) { Contador(coluna).ultimo += quantos; }

  private:
    struct TContador {
        std::string coluna;
        std::int64_t ultimo = 0;
    };
    TContador& Contador(std::string_view coluna);

    std::vector<TContador> contadores_;
};

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
std::string Lida(const TColunaFisica& coluna, const TDialeto& dialeto, const std::string& apelido = {});
/// As statements take them.
std::string ListaDaOrigem(const std::vector<TColunaDaCopia>& colunas, const TDialeto& dialeto);
std::string ComandoInsere(const std::string& destino, const std::vector<TColunaDaCopia>& colunas,
                          const TDialeto& dialeto);

/// The value as the target takes it. Throws TErroConversao when it cannot hold the value whole.
TValor ConverteParaColuna(const TValor& valor, const TColunaFisica& coluna);

/// A value, read as Lida has it, as it goes to another column. Blobs pass byte by byte. A text becomes the bytes
/// that its own column holds, or those of the text blob's character set; a text blob becomes text by its own set.
TValor ValorNaPassagem(const TValor& valor, const TColunaFisica& origem, const TColunaFisica& destino);

}  // namespace wkd
