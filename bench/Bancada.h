#pragma once

#include <memory>
#include <string>
#include <vector>

#include "BancoGrande.h"
#include "ServidorFirebird.h"

namespace wkd {

/// Where a database is opened: by the embedded engine, or through loopback at a server of this process.
struct TLugar {
    std::string nome;      // as a line of the table says it
    std::string servidor;  // "host/port"; empty is the embedded engine
};

/// What the cases are measured on, made at its first use. All databases have forced writes.
class TBancada {
  public:
    static TLugar Embutido() { return {"embutido", ""}; }
    static TLugar Rede();

    /// The big database, one for each place.
    const TBancoGrande& Grande(const TLugar& lugar);

    /// Measures on the big database of either place.
    template <class F>
    auto NosDoisLugares(F&& mede) {
        return std::vector{mede(Grande(Embutido()), Embutido()), mede(Grande(Rede()), Rede())};
    }

  private:
    std::unique_ptr<TBancoGrande> embutido_, naRede_;
};

}  // namespace wkd
