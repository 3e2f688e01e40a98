#pragma once

#include <atomic>
#include <chrono>

namespace wkd {

/// Since when a connection has been waiting for its server: set by the connection's thread, read by any.
class TRelogioDeEspera {
  public:
    /// One call to the server.
    class TChamada {
      public:
        explicit TChamada(TRelogioDeEspera& relogio) : relogio_(relogio) { relogio_.desde_ = Agora(); }
        ~TChamada() { relogio_.desde_ = 0; }
        TChamada(const TChamada&) = delete;
        TChamada& operator=(const TChamada&) = delete;

      private:
        TRelogioDeEspera& relogio_;
    };

    std::chrono::milliseconds Espera() const {
        const auto desde = desde_.load();
        if (desde == 0) return {};
        return std::chrono::duration_cast<std::chrono::milliseconds>(TRelogio::duration(Agora() - desde));
    }

  private:
    using TRelogio = std::chrono::steady_clock;
    static TRelogio::rep Agora() { return TRelogio::now().time_since_epoch().count(); }

    std::atomic<TRelogio::rep> desde_ = 0;
};

}  // namespace wkd
