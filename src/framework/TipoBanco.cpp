#include "TipoBanco.h"

#include <array>

namespace wkd {

namespace {

constexpr std::array<std::string_view, 5> kTextos = {"tbInterbase", "tbMySQL", "tbOracle", "tbSQLServer", "tbODBC"};

}  // namespace

std::string_view TipoBancoToStr(TTipoBanco tipo) { return kTextos[static_cast<std::size_t>(tipo)]; }

std::optional<TTipoBanco> StrToTipoBanco(std::string_view texto) {
    for (std::size_t i = 0; i < kTextos.size(); ++i)
        if (kTextos[i] == texto) return static_cast<TTipoBanco>(i);
    return std::nullopt;
}

}  // namespace wkd
