#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "context/Contexto.h"

namespace wkd {

/// One run whose report is kept.
struct TExecucaoGuardada {
    std::string alias, pacote = {}, veredicto;
    std::string inicio, fim = {};     // "2026-11-22T13:15:00"
    std::int64_t segundos = 0;        // between them
    std::filesystem::path relatorio;  // its JSON; the page stands beside it
};

/// How many are kept; the older ones are deleted.
inline constexpr std::size_t kExecucoesGuardadas = 100;

/// Keeps the two texts of a run's report below the program's folder, under its start and alias. Throws
/// std::system_error.
void GuardaNoHistorico(const TEvidencia& evidencia, std::string_view json, std::string_view html,
                       const std::filesystem::path& pastaPrograma);

/// The runs of the alias, of all where it is empty, newest first. A report that cannot be read is left out.
std::vector<TExecucaoGuardada> Historico(const std::filesystem::path& pastaPrograma, std::string_view alias = {});
/// The newest of them; reads no other report. Of one that cannot be read it tells when it was, and that.
std::optional<TExecucaoGuardada> UltimaExecucao(const std::filesystem::path& pastaPrograma, std::string_view alias);

/// For people, a line each, and for programs (one JSON object).
std::string HistoricoEmTexto(const std::vector<TExecucaoGuardada>& execucoes);
/// When, package, verdict.
std::string UltimaEmTexto(const std::optional<TExecucaoGuardada>& ultima);
std::string HistoricoEmJson(const std::vector<TExecucaoGuardada>& execucoes);

}  // namespace wkd
