#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "values/Valor.h"

namespace wkd {

/// A value that is made where it stays: TLinha::emplace_back(TFeito{[&] { return ...; }}).
template <class F>
struct TFeito {
    F faz;
    operator TValor() const { return faz(); }
};
template <class F>
TFeito(F) -> TFeito<F>;

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

/// Dates and times as packets hold them. Nothing is returned for what is no date of the years 1 to 9999 or no time
/// of day. Days count from 0001-01-01 = 1, times in milliseconds.
std::optional<TData> DataDeDias(std::int64_t dias);
std::optional<THora> HoraDeMs(std::int64_t ms);
std::optional<TDataHora> DataHoraDeMs(double ms);

std::int32_t DiasDe(TData data);
std::int32_t MsDe(THora hora);
double MsDe(TDataHora quando);

/// YYYYMMDD or YYYY-MM-DD, then nothing, or blank or "T" and a time.
std::optional<TDataHora> DataHoraDeXml(std::string_view texto);
/// HH:MM:SS, then nothing, milliseconds (three digits), or a point and a fraction.
std::optional<THora> HoraDeXml(std::string_view texto);

std::string DataParaXml(TData data);
std::string HoraParaXml(THora hora);
/// Midnight is the date alone.
std::string DataHoraParaXml(TDataHora quando);

inline constexpr std::int64_t kTiquesPorMs = kTiquesPorSegundo / 1000;

}  // namespace wkd
