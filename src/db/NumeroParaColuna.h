#pragma once

#include <cstdint>
#include <string_view>

#include "Valor.h"

namespace wkd {

/// The number times 10^escala, for a fixed-point column. A double is rounded to the decimal places when that changes
/// nothing in its first twelve digits. Throws TErroConversao for what the column cannot hold whole.
std::int64_t NumeroFixo(const TValor& valor, int escala);

/// Number for a floating column. Throws TErroConversao for an integer that a double does not hold.
double Flutuante(const TValor& valor);

/// Throws the TErroConversao "o valor ... não cabe em ...".
[[noreturn]] void NaoCabe(const TValor& valor, std::string_view em);

}  // namespace wkd
