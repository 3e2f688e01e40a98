#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "context/Contexto.h"

namespace wkd {

/// The next thing to do about an error of that kind; never empty.
std::string_view Providencia(TFalha falha);
/// The kind in one word, for programs.
std::string_view NomeDaFalha(TFalha falha);

/// What became of a run, in one line.
std::string Veredicto(const TEvidencia& evidencia);
/// Whether nothing is missing after it.
bool TudoFeito(const TEvidencia& evidencia);

// The evidence of a run: one JSON object for programs, and one page for people that opens without network and prints
// on paper.

std::string RelatorioEmJson(const TEvidencia& evidencia);
std::string RelatorioEmHtml(const TEvidencia& evidencia);

/// Writes both as "AtualizaWKD.relatorio.json" and ".html" into the folder, each whole or not at all, and keeps
/// them in the history. Throws std::system_error.
void GravaRelatorio(const TEvidencia& evidencia, const std::filesystem::path& pasta);

}  // namespace wkd
