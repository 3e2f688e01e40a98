#pragma once

#include "Eco.h"
#include "TelaSilenciosa.h"

namespace wkd {

/// Screen of a command that only reads: what fails goes to standard error, everything else nowhere.
class TTelaDoConsole : public TTelaSilenciosa {
  public:
    void Memo2(std::string_view linha) override { EscreveNosErros(linha); }
    void Informacao(std::string_view texto) override { EscreveNosErros(texto); }
};

}  // namespace wkd
