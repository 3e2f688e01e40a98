#pragma once

#include <string>
#include <vector>

#include "context/Contexto.h"
#include "dialect/Dialeto.h"

namespace wkd {

/// What goes with a table when it is dropped, and what keeps it from being dropped, from the server's catalogue. Table
/// names in capitals. Empty answers on servers whose catalogue is not known here.

/// Statements that give the table again what SINDSEC and the dictionary do not know: computed columns, indexes, unique,
/// foreign and check constraints, grants, comments. `nome` is the table's as the package writes it, by which its
/// indexes are looked up in SINDSEC.
std::vector<std::string> ComandosDeDevolucao(TContexto& ctx, const std::string& nome);

/// Of these indexes of the table, none a constraint's, in their order.
std::vector<TIndiceComoEra> IndicesComoEram(TContexto& ctx, const std::string& tabela,
                                            const std::vector<TIndice>& indices);

/// What its columns have and the told definitions do not: identity, a collation, a default that the dictionary lacks.
std::vector<TFonte> PropriedadesPerdidas(TContexto& ctx, const std::string& tabela);
}  // namespace wkd
