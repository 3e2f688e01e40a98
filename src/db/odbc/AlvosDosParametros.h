#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wkd {

/// Column that a parameter is stored in: by name, or by its place in an INSERT that names no columns.
struct TAlvo {
    std::string coluna;
    std::optional<std::size_t> posicao;
    bool Conhecido() const { return posicao || !coluna.empty(); }
};

/// Table that a statement with "?" writes into, and for every "?" in order the column that takes it as it is. A "?"
/// inside an expression or a condition has no column.
struct TAlvosDosParametros {
    std::string tabela;
    std::vector<TAlvo> alvos;
};

TAlvosDosParametros AlvosDosParametros(std::string_view sql);

}  // namespace wkd
