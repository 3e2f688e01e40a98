#include "plan/TempoDaCopia.h"

#include <algorithm>
#include <chrono>

#include "copy/CopiaDeLinhas.h"
#include "dialect/Dialeto.h"

namespace wkd {

namespace {

constexpr double kRegistrosPorSegundo = 40'000;  // of a rebuild that waits for no disk, docs/desempenho.md
/// Pages that a commit writes beside those that its rows fill: header, state of transactions, pointers, and pages that
/// are not full yet. Measured with twelve columns, a key, and pages of 8 KB.
constexpr double kPaginasPorCommit = 6;
constexpr double kBytesPorPagina = 8192;
constexpr double kConversasPorLote = 1.5;  // begin and end, and the rows between them

template <class TTrabalho>
double Segundos(TTrabalho&& trabalho) {
    const auto inicio = std::chrono::steady_clock::now();
    trabalho();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - inicio).count();
}

}  // namespace

std::optional<TCustoDoCommit> TCustoDoCommit::Mede(TConnection& conexao) {
    constexpr int kVezes = 10;
    if (!Dialeto(conexao).TransacaoVaziaGrava()) return std::nullopt;
    double lendo = 0, gravando = 0;
    for (int vez = 0; vez < kVezes; ++vez) {
        lendo += Segundos([&] {
            conexao.StartInstantaneo();
            conexao.Rollback();
        });
        gravando += Segundos([&] { TTransacao(conexao).Commit(); });
    }
    return TCustoDoCommit{lendo / kVezes, std::max(gravando - lendo, 0.0) / kVezes};
}

std::int64_t TVolumeDaCopia::Commits(std::optional<std::size_t> linhasPorCommit) const {
    const auto lotes = [&](std::size_t linhas) {
        const auto porLote = static_cast<std::int64_t>(linhasPorCommit.value_or(linhas));
        return (registros + porLote - 1) / porLote;
    };
    return lotes(kLinhasNaVolta) + (soVolta ? 0 : lotes(kLinhasNaIda));
}

double TVolumeDaCopia::Segundos(const std::optional<TCustoDoCommit>& custo,
                                std::optional<std::size_t> linhasPorCommit) const {
    const double semEspera = static_cast<double>(registros) / kRegistrosPorSegundo;
    if (!custo) return semEspera;
    const auto commits = static_cast<double>(Commits(linhasPorCommit));
    const double cheias = (soVolta ? 1 : 2) * static_cast<double>(bytes) / kBytesPorPagina;
    return semEspera + commits * kConversasPorLote * custo->conversa +
           (commits * kPaginasPorCommit + cheias) * custo->pagina;
}

}  // namespace wkd
