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
/// Rows on their way back whose values pass the client.
std::vector<TMedida> MedeConversao(TBancada& bancada);
/// Ten times the rows: time and memory of a rebuild.
std::vector<TMedida> MedeReconstrucao(TBancada& bancada);
/// The report dictionary alone, and all passes behind the tables.
std::vector<TMedida> MedePassos(TBancada& bancada);
/// "Atualizar todas as tabelas" on a database that differs in nothing.
std::vector<TMedida> MedeTodas(TBancada& bancada);
/// New tables with key and indexes.
std::vector<TMedida> MedeCriacao(TBancada& bancada);
/// What a run over the big dictionary holds in memory.
std::vector<TMedida> MedeMemoria(TBancada& bancada);
/// The run log.
std::vector<TMedida> MedeLog(TBancada& bancada);
/// The same kinds of work on a SQL Server, beside ODBC as it is; nothing where there is none.
std::vector<TMedida> MedeSqlServer(TBancada& bancada);
/// The program's start.
std::vector<TMedida> MedeAbertura(TBancada& bancada);

/// Where a case is measured besides the disk in memory.
enum class TTurnos { SoNaMemoria, Discos, DiscosERede };

struct TCaso {
    std::string_view nome;  // by which the command line selects it
    std::vector<TMedida> (*mede)(TBancada& bancada);
    TTurnos turnos;
};

inline constexpr TCaso kCasos[] = {
    {"pacotes", MedePacotes, TTurnos::SoNaMemoria},
    {"nada-mudou", MedeNadaMudou, TTurnos::DiscosERede},
    {"memoria", MedeMemoria, TTurnos::SoNaMemoria},
    {"copia-embutida", MedeCopiaEmbutida, TTurnos::Discos},
    {"copia-rede", MedeCopiaNaRede, TTurnos::DiscosERede},
    {"conversao", MedeConversao, TTurnos::DiscosERede},
    {"reconstrucao", MedeReconstrucao, TTurnos::Discos},
    {"todas", MedeTodas, TTurnos::DiscosERede},
    {"passos", MedePassos, TTurnos::DiscosERede},
    {"criacao", MedeCriacao, TTurnos::DiscosERede},
    {"log", MedeLog, TTurnos::Discos},
    {"abertura", MedeAbertura, TTurnos::SoNaMemoria},
    {"sql-server", MedeSqlServer, TTurnos::SoNaMemoria},
};

}  // namespace wkd
