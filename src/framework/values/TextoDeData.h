#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "values/Valor.h"

namespace wkd {

/// "yyyy-mm-dd"
std::string TextoDaData(TData data);
/// "hh:mm:ss", with a fraction of up to 7 digits when there is one.
std::string TextoDaHora(THora hora);
std::string TextoDaDataHora(TDataHora quando);

// Readers: blanks around are skipped; nothing for a text of another form or a day or time that does not exist.
/// "hh:mm" or "hh:mm:ss" with a fraction of up to 7 digits.
std::optional<THora> LeHora(std::string_view texto);
/// A date, "yyyy-mm-dd" or "dd/mm/yyyy", alone or followed by a blank or "T" and a time.
std::optional<TDataHora> LeDataHora(std::string_view texto);

/// The day of a date that exists, in the years 1 to 9999; nothing for any other three numbers.
std::optional<TData> DataValida(int ano, int mes, int dia);

/// The pattern with the separators of the user's locale for "/" and ":"; unchanged where the system keeps none.
std::string PadraoDoUsuario(std::string_view padrao);

/// Date and time by a pattern of dd, mm, yy, yyyy, hh and ss; "mm" behind "hh" stands for minutes; every other
/// character stands for itself.
std::string FormataDataHora(TDataHora quando, std::string_view padrao);

/// Seconds from `inicio` to `fim` as "hh:mm:ss".
std::string FormataDuracao(TDataHora inicio, TDataHora fim);
std::string FormataDuracao(std::chrono::seconds duracao);

/// A number with a point between thousands.
std::string ComMilhares(std::int64_t numero);

}  // namespace wkd
