#pragma once

#include <netinet/in.h>

namespace wkd {

/// Address of a port of 127.0.0.1.
sockaddr_in Local(int porta);

/// A free port of 127.0.0.1 that is listened on; by itself it takes connections and never answers.
class TPortaMuda {
  public:
    explicit TPortaMuda(int fila = 1);
    ~TPortaMuda();
    TPortaMuda(const TPortaMuda&) = delete;
    TPortaMuda& operator=(const TPortaMuda&) = delete;

    int Numero() const { return numero_; }
    int Soquete() const { return soquete_; }

  private:
    int soquete_, numero_ = 0;
};

/// A port of 127.0.0.1 that nobody listens on.
int PortaLivre();

}  // namespace wkd
