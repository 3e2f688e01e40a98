#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ClientDataSet.h"

namespace wkd {

/// Numbers for the auto-increment columns of one table whose rows hold none: 1, 2, ... per column, for one copy.
class TRenumeracao {
  public:
    /// Takes the required and key columns that count up from the package's rows of the table; leaves the dataset
    /// behind its last row.
    explicit TRenumeracao(TClientDataSet& satribNovo);

    /// Whether the column counts up, letter case ignored.
    bool Tem(std::string_view coluna) const;
    /// The value, or the column's next number in place of zero, NULL or empty text. Throws TErroConversao for what
    /// does not read as an integer.
    TValor Numera(std::string_view coluna, const TValor& valor);

  private:
    struct TContador {
        std::string coluna;
        std::int32_t ultimo = 0;
    };
    std::vector<TContador> contadores_;
};

}  // namespace wkd
