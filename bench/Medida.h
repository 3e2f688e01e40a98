#pragma once

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <type_traits>

namespace wkd {

/// One line of the benchmark's table: ours beside the least that must be done, measured in turns in the same run.
struct TMedida {
    std::string trabalho;
    std::string piso;     // what the floor does
    double limite = 0;    // ratio of ours to the floor that is to be kept
    double nosso = 1e9;   // seconds, or MB
    double doPiso = 1e9;  // the same
    double ingenuo = -1;  // a plain port of the work; -1 where there is none
    int comandos = -1;    // statements sent; -1 where there are none to count
    bool emMegabytes = false;

    double Razao() const { return nosso / doPiso; }
};

using TRelogio = std::chrono::steady_clock;

inline double Segundos(TRelogio::time_point inicio) {
    return std::chrono::duration<double>(TRelogio::now() - inicio).count();
}

/// Seconds of the work. One that returns a double has measured the part of it that counts.
template <class F>
double Cronometra(F&& trabalho) {
    const auto inicio = TRelogio::now();
    if constexpr (std::is_same_v<std::invoke_result_t<F>, double>) {
        return trabalho();
    } else {
        trabalho();
        return Segundos(inicio);
    }
}

/// Runs both in turns, so that what else the machine does meets both, and keeps the shortest time of each.
template <class TNosso, class TPiso>
TMedida Alterna(TMedida medida, int vezes, TNosso&& nosso, TPiso&& piso) {
    for (int vez = 0; vez < vezes; ++vez) {
        medida.doPiso = std::min(medida.doPiso, Cronometra(piso));
        medida.nosso = std::min(medida.nosso, Cronometra(nosso));
    }
    return medida;
}

/// A line of the table, in Markdown.
std::string LinhaDaTabela(const TMedida& medida);
/// Its first two lines.
std::string CabecalhoDaTabela();

}  // namespace wkd
