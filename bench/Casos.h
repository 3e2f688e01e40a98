#pragma once

#include <string>
#include <vector>

namespace wkd {

/// One line of the benchmark's table: our time beside that of the least that must be done, measured in the same run.
struct TMedida {
    std::string trabalho;
    double nosso = 0;  // seconds
    double piso = 0;
    int comandos = -1;  // statements sent; -1 where there are none to count
};

class TBancoGrande;

/// Reads the column dictionary of 20,000 rows in both forms. Floor: every byte touched once, the rows copied.
std::vector<TMedida> MedePacotes();
/// The update with nothing to change, up to the end of the tables. Floor: SARQUIVO, SATRIB and the columns of all
/// tables read once.
std::vector<TMedida> MedeNadaMudou(const TBancoGrande& banco);

}  // namespace wkd
