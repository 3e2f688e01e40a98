#pragma once

#include <sys/types.h>

#include <string>

#include "PastaTemporaria.h"
#include "Portas.h"

namespace wkd {

/// A Firebird server of its own on a free port of 127.0.0.1, in a temporary folder. SYSDBA's password is "masterkey".
class TServidorFirebird {
  public:
    /// Starts the server, with that line in its configuration, and waits until it answers. Throws std::runtime_error
    /// with the server's own log.
    explicit TServidorFirebird(const std::string& configuracao = "");
    ~TServidorFirebird();
    TServidorFirebird(const TServidorFirebird&) = delete;
    TServidorFirebird& operator=(const TServidorFirebird&) = delete;

    static bool Instalado();
    /// Server of this process, started at the first use.
    static TServidorFirebird& DoProcesso();

    int Porta() const { return porta_; }
    /// "127.0.0.1/port", as it stands before ":" and the file.
    std::string Endereco() const { return "127.0.0.1/" + std::to_string(porta_); }

  private:
    void Espera();

    TPastaTemporaria pasta_;
    int porta_;
    pid_t processo_;
};

}  // namespace wkd
