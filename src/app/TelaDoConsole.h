#pragma once

#include <chrono>

#include "Eco.h"
#include "TelaSilenciosa.h"

namespace wkd {

/// Screen of a command that only reads: what fails goes to standard error, everything else nowhere.
class TTelaDoConsole : public TTelaSilenciosa {
  public:
    void Memo2(std::string_view linha) override { EscreveNosErros(linha); }
    void Informacao(std::string_view texto) override { EscreveNosErros(texto); }
    void SemResposta(std::string_view texto) override {
        const auto agora = std::chrono::steady_clock::now();
        if (texto.empty() || agora < proxima_) return;
        proxima_ = agora + std::chrono::seconds(30);
        EscreveNosErros(texto);
    }

  private:
    std::chrono::steady_clock::time_point proxima_{};
};

}  // namespace wkd
