#pragma once

#include <string_view>
#include <vector>

#include "Bancada.h"
#include "Medida.h"

namespace wkd {

// One subject a file; each gives its lines of the table.

/// Reads the column dictionary of 20,000 rows in both forms.
std::vector<TMedida> MedePacotes(TBancada& bancada);
/// The update with nothing to change, up to the end of the tables.
std::vector<TMedida> MedeNadaMudou(TBancada& bancada);
/// Rows of a table into its backup and back, beside raw loops.
std::vector<TMedida> MedeCopiaEmbutida(TBancada& bancada);
std::vector<TMedida> MedeCopiaNaRede(TBancada& bancada);
/// Ten times the rows: time and memory of a rebuild.
std::vector<TMedida> MedeReconstrucao(TBancada& bancada);
/// The report dictionary alone, and all passes behind the tables.
std::vector<TMedida> MedePassos(TBancada& bancada);
/// "Atualizar todas as tabelas" on a database that differs in nothing.
std::vector<TMedida> MedeTodas(TBancada& bancada);
/// New tables with key and indexes.
std::vector<TMedida> MedeCriacao(TBancada& bancada);
/// The run log.
std::vector<TMedida> MedeLog(TBancada& bancada);
/// The program's start.
std::vector<TMedida> MedeAbertura(TBancada& bancada);

struct TCaso {
    std::string_view nome;  // by which the command line selects it
    std::vector<TMedida> (*mede)(TBancada& bancada);
};

inline constexpr TCaso kCasos[] = {
    {"pacotes", MedePacotes},        {"nada-mudou", MedeNadaMudou},      {"copia-embutida", MedeCopiaEmbutida},
    {"copia-rede", MedeCopiaNaRede}, {"reconstrucao", MedeReconstrucao}, {"todas", MedeTodas},
    {"passos", MedePassos},          {"criacao", MedeCriacao},           {"log", MedeLog},
    {"abertura", MedeAbertura},
};

}  // namespace wkd
