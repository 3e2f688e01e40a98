#pragma once

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "LinhaLenta.h"

namespace wkd {

/// What a work took: seconds, and turns to the server over a line with delay (0 without one).
struct TTempo {
    double segundos = 0;
    long voltas = 0;

    TTempo& operator+=(const TTempo& outro) {
        segundos += outro.segundos;
        voltas += outro.voltas;
        return *this;
    }
};

enum class TUnidade { Segundos, Megabytes, Paginas };

/// One line of the benchmark's table: ours beside the least that must be done, measured in turns in the same run.
struct TMedida {
    std::string trabalho;
    std::string piso;                                    // what the floor does
    double limite = 0;                                   // ratio of ours to the floor that is to be kept
    double nosso = std::numeric_limits<double>::max();   // of its unit
    double doPiso = std::numeric_limits<double>::max();  // the same
    double ingenuo = -1;                                 // a plain port of the work; -1 where there is none
    int comandos = -1;                                   // statements sent; -1 where there are none to count
    long voltas = 0;                                     // turns to the server over a line with delay
    TUnidade unidade = TUnidade::Segundos;

    // Where and when it was measured
    std::string caso = {}, disco = {};
    int atraso = 0;    // ms of the line to the server, each way
    double carga = 0;  // of the machine, behind it

    double Razao() const { return nosso / doPiso; }
    void Nosso(const TTempo& tempo);
    void DoPiso(const TTempo& tempo) { doPiso = std::min(doPiso, tempo.segundos); }
};

using TRelogio = std::chrono::steady_clock;

/// Time since it was made.
class TCronometro {
  public:
    TTempo Passou() const {
        return {std::chrono::duration<double>(TRelogio::now() - inicio_).count(), TLinhaLenta::Voltas() - voltas_};
    }

  private:
    TRelogio::time_point inicio_ = TRelogio::now();
    long voltas_ = TLinhaLenta::Voltas();
};

/// Time of the work. One that returns a time has measured the part of it that counts.
template <class F>
TTempo Cronometra(F&& trabalho) {
    const TCronometro cronometro;
    if constexpr (std::is_same_v<std::invoke_result_t<F>, TTempo>) {
        return trabalho();
    } else {
        trabalho();
        return cronometro.Passou();
    }
}

/// Runs both in turns, so that what else the machine does meets both, and keeps the shortest time of each.
template <class TNosso, class TPiso>
TMedida Alterna(TMedida medida, int vezes, TNosso&& nosso, TPiso&& piso) {
    for (int vez = 0; vez < vezes; ++vez) {
        medida.DoPiso(Cronometra(piso));
        medida.Nosso(Cronometra(nosso));
    }
    return medida;
}

/// A line of the table, in Markdown.
std::string LinhaDaTabela(const TMedida& medida);
/// Its first two lines.
std::string CabecalhoDaTabela();

/// All lines for a program: an array of objects, times in seconds. Throws std::runtime_error.
void GravaJson(const std::filesystem::path& arquivo, const std::vector<TMedida>& medidas);

/// Processes that were ready to run, on average of the last minute.
double CargaDaMaquina();

}  // namespace wkd
