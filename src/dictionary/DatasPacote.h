#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Valor.h"

namespace wkd {

/// Dates and times as packets hold them. Nothing is returned for what is no date of the years 1 to 9999 or no time
/// of day. Days count from 0001-01-01 = 1, times in milliseconds.
std::optional<TData> DataDeDias(std::int64_t dias);
std::optional<THora> HoraDeMs(std::int64_t ms);
std::optional<TDataHora> DataHoraDeMs(double ms);
std::optional<TData> DataValida(int ano, int mes, int dia);

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
