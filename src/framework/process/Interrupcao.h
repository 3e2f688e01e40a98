#pragma once

#include <chrono>
#include <functional>

#include "process/Programa.h"

namespace wkd {

/// Thrown where work ends because the process was asked to end. No std::exception: no step may take it for an error
/// of its own and go on.
struct TInterrompida {};

/// The request to end the process: one a process, made by a signal or by a console that closes. The batch in hand is
/// finished; then every statement throws TInterrompida, so that the engine unwinds as after a cut at that statement.
class TInterrupcao {
  public:
    /// From the first request on. A second request brings all but the last to now.
    struct TPrazos {
        std::chrono::milliseconds cancela{3000};   // open transactions and the statement under way are broken off
        std::chrono::milliseconds abandona{6000};  // connections whose server does not answer are closed
        std::chrono::milliseconds mata{9000};      // the process ends as it is
    };

    /// Takes SIGINT and SIGTERM in a thread that waits for them. To be called before any other thread starts and before
    /// a client library is loaded: those have handlers of their own, which shut their engine down under the run.
    static void AtendeSinais(const TPrazos& prazos);

    static void Pede(int sinal);
    /// Signal that asked; 0 when none did.
    static int Sinal();
    /// Throws TInterrompida when the process was asked to end; inside a transaction not before it is to be broken off.
    static void Confere(bool emTransacao = false);
    /// For the next test.
    static void Esquece();

    enum class TEtapa { Nenhuma, Pedida, Cancela, Abandona };
    static TEtapa Etapa();
};

/// The end of a program that has closed all it used. Nothing of it is destroyed any more: at a usual exit the client
/// library unloads the embedded engine's code, in which a thread of either may have a last step left to do.
[[noreturn]] void EncerraProcesso(TCodigoDeSaida codigo);

/// While it lives, `escuta` hears of the request, again and again until the process ends, with what it has come to.
/// Called by a thread of its own; it must neither throw nor wait.
class TOuvinteDeInterrupcao {
  public:
    using TEscuta = std::function<void(TInterrupcao::TEtapa)>;

    explicit TOuvinteDeInterrupcao(TEscuta escuta);
    ~TOuvinteDeInterrupcao();
    TOuvinteDeInterrupcao(const TOuvinteDeInterrupcao&) = delete;
    TOuvinteDeInterrupcao& operator=(const TOuvinteDeInterrupcao&) = delete;

  private:
    TEscuta escuta_;
};

}  // namespace wkd
