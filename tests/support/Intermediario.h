#pragma once

#include <atomic>
#include <functional>
#include <list>
#include <mutex>
#include <thread>

#include "Portas.h"

namespace wkd {

/// Stands on a port of 127.0.0.1 between a program and a server there, and fails as a network does.
class TIntermediario {
  public:
    explicit TIntermediario(int servidor);
    ~TIntermediario();
    TIntermediario(const TIntermediario&) = delete;
    TIntermediario& operator=(const TIntermediario&) = delete;

    int Porta() const { return escuta_.Numero(); }
    /// Nothing passes on the open connections any more, and nothing is closed.
    void Emudece();
    /// The open connections end.
    void Corta();
    /// As Corta, but what the program sends in the next moment still reaches the server.
    void CortaAVolta();
    /// Whether new connections are let through.
    void Aceita(bool sim) { aceita_ = sim; }
    /// From now on a Firebird service, which names no file when it connects, is turned away.
    void RecusaServicos() { recusaServicos_ = true; }

  private:
    enum class TModo { Passa, Muda, SemVolta, Cortada };
    struct TLinha {
        int programa = -1, servidor = -1;
        std::atomic<TModo> modo = TModo::Passa;
        std::thread thread;
    };

    void Atende();
    void Liga(int programa);
    void Passa(TLinha& linha);
    void Todas(TModo modo);

    const TPortaMuda escuta_{16};
    const int servidor_;
    std::atomic<bool> fim_ = false, aceita_ = true, recusaServicos_ = false;
    std::mutex guarda_;
    std::list<TLinha> linhas_;  // behind guarda_
    std::thread thread_;
};

}  // namespace wkd
