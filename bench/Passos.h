#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "BancoGrande.h"
#include "TelaMuda.h"
#include "context/Contexto.h"

namespace wkd {

/// What the steps of a run work on: the connected big database and the tables of its package.
class TPassos {
  public:
    explicit TPassos(const TBancoGrande& banco);

    /// Runs a step; returns the statements that were sent.
    template <class F>
    std::vector<std::string> Observa(F&& passo) {
        std::vector<std::string> comandos;
        dm_.SQLConnection1.Observa([&](std::string_view comando) { comandos.emplace_back(comando); });
        passo(ctx_);
        dm_.SQLConnection1.Observa({});
        if (!tela_.erros.empty()) throw std::runtime_error(tela_.erros.front());
        return comandos;
    }
    TDataModulo& Modulo() { return dm_; }

  private:
    TTelaMuda tela_;
    TDataModulo dm_;
    TOpcoes opcoes_;
    TEstado estado_;
    TContexto ctx_{dm_, opcoes_, estado_, {}, {}};
};

/// All passes behind the tables.
void TodosOsPasses(TContexto& ctx);

}  // namespace wkd
