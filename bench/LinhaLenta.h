#pragma once

#include <atomic>
#include <chrono>
#include <deque>
#include <list>
#include <string>
#include <thread>

#include "Portas.h"

namespace wkd {

/// A long line: stands on a port of 127.0.0.1 before a server there, holds back what passes, in both directions, and
/// counts how often a client waits for the server. A thread of its own.
class TLinhaLenta {
  public:
    using TRelogio = std::chrono::steady_clock;

    /// `atraso` for each direction: a round trip takes twice as long.
    TLinhaLenta(int servidor, std::chrono::microseconds atraso);
    ~TLinhaLenta();
    TLinhaLenta(const TLinhaLenta&) = delete;
    TLinhaLenta& operator=(const TLinhaLenta&) = delete;

    int Porta() const { return escuta_.Numero(); }
    /// Turns from client to server over all lines of this process so far.
    static long Voltas() { return voltas_; }

  private:
    struct TTrecho {
        TRelogio::time_point quando;  // it is passed on
        std::string bytes;            // none is the end
    };
    struct TSentido {
        int de, para;
        std::deque<TTrecho> fila = {};
        bool acabou = false;
    };
    struct TLigacao {
        TSentido ida, volta;
        bool perguntou = false;  // the client spoke last
    };

    void Atende();
    void EsperaAlgo();
    void Liga();
    void Recebe(TLigacao& ligacao, TSentido& sentido);
    static void Entrega(TSentido& sentido);

    const TPortaMuda escuta_{16};
    const int servidor_;
    const std::chrono::microseconds atraso_;
    std::atomic<bool> fim_ = false;
    std::list<TLigacao> ligacoes_;
    static inline std::atomic<long> voltas_ = 0;
    std::thread thread_;
};

}  // namespace wkd
