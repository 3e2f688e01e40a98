#pragma once

#include <string>
#include <string_view>

#include "Mascara.h"
#include "plan/Plano.h"

namespace wkd {

// What a run has written, and what a plan found, without the values of rows.

/// The newest entries of the run log, so many bytes at most. Of an entry stay its time, its words and its names.
std::string LogSemValores(std::string_view log, const TMascara& mascara, std::size_t limite);
/// The report of a run, as JSON. Fields that this program does not write are left out. Throws std::exception for a text
/// that is no report.
std::string RelatorioSemValores(const std::string& json, const TMascara& mascara);
/// Findings count rows; the examples that they show are gone.
TPlano SemExemplos(TPlano plano);
/// The mask learns the tables that a report names.
void ConheceTabelas(const std::string& json, TMascara& mascara);

}  // namespace wkd
