#pragma once

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "BancoGrande.h"
#include "LinhaLenta.h"
#include "Medida.h"
#include "ServidorFirebird.h"

namespace wkd {

/// Where a database is opened: by the embedded engine, or through loopback at a server of this process.
struct TLugar {
    std::string nome;      // as a line of the table says it
    std::string servidor;  // "host/port"; empty is the embedded engine
};

/// What one turn of the cases is measured on.
struct TTurno {
    std::string disco;            // as a line of the table says it
    std::filesystem::path pasta;  // all files of the turn are made there
    bool naMemoria = true;        // a commit waits for nothing
    std::optional<int> atraso =
        {};  // ms that the line to the server takes, each way; only the network is measured then
};

/// What the cases of a turn are measured on, made at its first use. All databases have forced writes.
class TBancada {
  public:
    /// From now on temporary files are made in the folder of the turn.
    explicit TBancada(TTurno turno);

    const TTurno& Turno() const { return turno_; }
    TLugar Rede();
    /// Those of the turn.
    std::vector<TLugar> Lugares();

    /// How many of something are measured where a commit, or a turn to the server, takes time: the ratio is that of
    /// all.
    int Quantos(int naMemoria) const;

    /// The big database of so many tables, one for each place.
    const TBancoGrande& Grande(const TLugar& lugar, int tabelas = kTabelas);

    /// Lines of a measure at every place of the turn.
    template <class F>
    auto EmTodosOsLugares(F&& mede) {
        std::vector<TMedida> medidas;
        for (const TLugar& lugar : Lugares()) std::ranges::move(mede(lugar), std::back_inserter(medidas));
        return medidas;
    }

  private:
    TTurno turno_;
    std::optional<TLinhaLenta> linha_;
    std::map<std::pair<std::string, int>, TBancoGrande> grandes_;
};

}  // namespace wkd
