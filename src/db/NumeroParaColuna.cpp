#include "NumeroParaColuna.h"

#include <cmath>
#include <limits>
#include <string>

#include "Erros.h"

namespace wkd {
namespace {

/// The number times 10^escala, when that is a whole one.
std::int64_t Reescala(TDecimal d, int escala, const TValor& valor) {
    constexpr auto kMaior = std::numeric_limits<std::int64_t>::max() / 10;
    for (; d.escala < escala; ++d.escala) {
        if (d.valor > kMaior || d.valor < -kMaior) NaoCabe(valor, "um número de ponto fixo");
        d.valor *= 10;
    }
    for (; d.escala > escala; --d.escala) {
        if (d.valor % 10 != 0) NaoCabe(valor, std::to_string(escala) + " casas decimais");
        d.valor /= 10;
    }
    return d.valor;
}

std::int64_t ReescalaDouble(double v, int escala, const TValor& valor) {
    const double exato = v * std::pow(10.0, escala);
    const double inteiro = std::round(exato);
    if (!(std::abs(inteiro) < 9.2233720368547748e18) || std::abs(inteiro - exato) > 1e-12 * std::abs(exato))
        NaoCabe(valor, "um número com " + std::to_string(escala) + " casas decimais");
    return static_cast<std::int64_t>(inteiro);
}

}  // namespace

void NaoCabe(const TValor& valor, std::string_view em) {
    throw TErroConversao("o valor " + valor.ComoTexto() + " não cabe em " + std::string(em));
}

std::int64_t NumeroFixo(const TValor& valor, int escala) {
    if (const auto* inteiro = valor.Se<std::int64_t>()) return Reescala({*inteiro, 0}, escala, valor);
    if (const auto* decimal = valor.Se<TDecimal>()) return Reescala(*decimal, escala, valor);
    if (const auto* real = valor.Se<double>()) return ReescalaDouble(*real, escala, valor);
    return Reescala(valor.Como<TDecimal>(TTipoDado::Decimal), escala, valor);
}

double Flutuante(const TValor& valor) {
    const double v = valor.Como<double>(TTipoDado::Flutuante);
    const auto* inteiro = valor.Se<std::int64_t>();
    if (inteiro && (std::abs(v) >= 9.2233720368547758e18 || static_cast<std::int64_t>(v) != *inteiro))
        NaoCabe(valor, "um número de ponto flutuante");
    return v;
}

}  // namespace wkd
