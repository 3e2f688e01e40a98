#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "values/Valor.h"

namespace wkd {

/// All digits of the number, as many decimal places as its scale: "-0.50".
std::string TextoDoDecimal(TDecimal numero);
/// Shortest text that reads back to the same double; "inf", "-inf", "nan".
std::string TextoDoDouble(double numero);

// Readers: blanks around the number and a plus sign are skipped; decimal comma and point are both read; nothing when
// the text is no number of that kind or is out of its range.
std::optional<std::int64_t> LeInteiro(std::string_view texto);
std::optional<TDecimal> LeDecimal(std::string_view texto);
std::optional<double> LeDouble(std::string_view texto);

/// The same number without trailing zeros among its decimal places.
TDecimal SemZerosFinais(TDecimal numero);
/// Whole part of the number, cut towards zero; nothing outside the range of 64 bits.
std::optional<std::int64_t> ParteInteira(double numero);
std::int64_t ParteInteira(TDecimal numero);

}  // namespace wkd
