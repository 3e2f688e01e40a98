#pragma once

#include <atomic>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "connection/Connection.h"
#include "odbc/Odbc.h"
#include "process/Interrupcao.h"

namespace wkd {

/// The socket of a connection, where the driver tells it (FreeTDS does). ODBC can ask a driver to cancel, but not to
/// stop waiting for a server that does not answer even that.
class TSoqueteOdbc {
  public:
    explicit TSoqueteOdbc(SQLHDBC ligacao);
    ~TSoqueteOdbc();
    TSoqueteOdbc(const TSoqueteOdbc&) = delete;
    TSoqueteOdbc& operator=(const TSoqueteOdbc&) = delete;

    /// Ends the connection: whoever waits for its server gets an error. False where the socket is not known.
    bool Corta() const noexcept;

  private:
    int copia_ = -1;  // a descriptor of our own: the driver may close its own at any time
};

/// Numbers, on the server, of a session's connections; one that was lost stays until the session begins anew: the
/// server may not know yet.
class TNumerosOdbc {
  public:
    void Inclui(std::string numero);
    void Tira(std::string_view numero);
    void Esquece();
    /// Separated by commas.
    std::string Todos() const;

  private:
    mutable std::mutex guarda_;
    std::vector<std::string> numeros_;  // behind guarda_
};

/// The call to the server that a session has under way, and how other threads break it off.
class TEmCurso {
  public:
    /// Scope of a call of the driver that may wait for the server; inside another one, that one rests. A `instrucao`
    /// is what the driver can be asked to cancel.
    class TChamada {
      public:
        TChamada(TEmCurso& emCurso, std::shared_ptr<TSoqueteOdbc> soquete, SQLHSTMT instrucao = SQL_NULL_HSTMT);
        ~TChamada();
        TChamada(const TChamada&) = delete;
        TChamada& operator=(const TChamada&) = delete;

      private:
        TEmCurso& emCurso_;
        TRelogioDeEspera::TChamada relogio_;
        std::shared_ptr<TSoqueteOdbc> soqueteDeFora_;
        SQLHSTMT instrucaoDeFora_;
    };

    std::chrono::milliseconds Espera() const { return relogio_.Espera(); }
    /// Gives the call under way up; of any thread. The connection is not to be used any more.
    void Cancela() noexcept;
    bool Cancelado() const { return cancelado_; }
    void Recomeca() {
        cancelado_ = false;
        numeros_.Esquece();
    }
    TNumerosOdbc& Numeros() { return numeros_; }

  private:
    /// Of the request to end the process: the statement is cancelled; later on, its connection is cut.
    void Interrompe(TInterrupcao::TEtapa etapa);
    void PedeAoDriver() noexcept;
    bool Corta() noexcept;

    TRelogioDeEspera relogio_;
    std::mutex guarda_;
    std::shared_ptr<TSoqueteOdbc> soquete_;  // behind guarda_
    SQLHSTMT instrucao_ = SQL_NULL_HSTMT;    // behind guarda_
    std::mutex cancelando_;                  // a call does not end while the driver is asked to cancel it
    std::atomic<bool> cancelado_ = false;
    TNumerosOdbc numeros_;
    std::future<void> pedido_;
    TOuvinteDeInterrupcao ouvinte_{[this](auto etapa) { Interrompe(etapa); }};
};

}  // namespace wkd
