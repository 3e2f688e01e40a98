#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "Valor.h"

namespace wkd {

/// Date and time by a pattern of dd, mm, yy, yyyy, hh and ss; "mm" behind "hh" stands for minutes; every other
/// character stands for itself.
std::string FormataDataHora(TDataHora quando, std::string_view padrao);

/// Seconds from `inicio` to `fim` as "hh:mm:ss".
std::string FormataDuracao(TDataHora inicio, TDataHora fim);
std::string FormataDuracao(std::chrono::seconds duracao);

/// A number with a point between thousands.
std::string ComMilhares(std::int64_t numero);

}  // namespace wkd
