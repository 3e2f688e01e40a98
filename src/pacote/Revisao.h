#pragma once

#include <string>
#include <vector>

#include "Inventario.h"

namespace wkd {

/// What a reviewer would not let pass. `regra` is a short name that does not change between versions.
struct TAchadoDaRevisao {
    std::string regra, tabela, objeto, texto;
};

/// Faults of the package itself: columns and indexes of unknown tables, unknown types, names that repeat or that a
/// server or the dictionary cannot hold, tables without key, keys and indexes over columns that are not there, packets
/// that cannot be read, no packet ARQUIVOS, packets that take the place of the customer's rows, entries that would be
/// refused. By table.
std::vector<TAchadoDaRevisao> Confere(const TInventario& pacote);
/// What an installation of the earlier package would lose or not get: tables and columns that are gone, texts that
/// shrink, types that change, versions that fall, and changes that no update would see since the version is the same.
std::vector<TAchadoDaRevisao> ConfereContra(const TInventario& pacote, const TInventario& anterior);

}  // namespace wkd
