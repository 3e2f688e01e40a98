#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ClientDataSet.h"
#include "Connection.h"

namespace wkd {

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

}  // namespace wkd
