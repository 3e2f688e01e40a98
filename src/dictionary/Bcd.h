#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "Valor.h"

namespace wkd {

/// Exact decimal of any length: `digitos` x 10^-`escala`, at least one digit.
struct TDigitos {
    bool negativo = false;
    std::string digitos;
    int escala = 0;

    /// Such as "-123.45": no zero at the left but the one before the point.
    std::string Texto() const;
    /// TDecimal, or the text when it does not fit.
    TValor Valor() const;
    /// Digits that the packed form needs: none left of the point but zeros are left out.
    std::size_t Precisao() const;
};

/// Sign, digits and one point; nothing for any other text.
std::optional<TDigitos> DigitosDeTexto(std::string_view texto);

/// Value of a packed decimal, NULL for a blank one. `causa` says what is wrong when nothing is returned.
std::optional<TValor> ValorDeBcd(std::string_view bytes, std::string& causa);
/// Packed form in `tamanho` bytes; nothing when the digits do not fit.
std::optional<std::string> BcdDeDigitos(const TDigitos& numero, std::size_t tamanho);

inline constexpr std::size_t kMaiorPrecisao = 64;

}  // namespace wkd
