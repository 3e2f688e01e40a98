#pragma once

#include <string>
#include <vector>

#include "context/Contexto.h"

namespace wkd {

/// What goes with a table when it is dropped, and what keeps it from being dropped, from the server's catalogue. Table
/// names in capitals. Empty answers on servers whose catalogue is not known here.

/// Statements that give the table again what SINDSEC and the dictionary do not know: computed columns, indexes, unique,
/// foreign and check constraints, grants, comments. `nome` is the table's as the package writes it, by which its
/// indexes are looked up in SINDSEC.
std::vector<std::string> ComandosDeDevolucao(TContexto& ctx, const std::string& nome);

/// How an index is made again as it is, with what its server alone has (SQL Server: directions column by column,
/// columns that are only kept along, a filter).
struct TIndiceComoEra {
    std::string comando;
    std::vector<std::string> colunas;  // also those kept along
};
/// Of these indexes of the table, none a constraint's, in their order.
std::vector<TIndiceComoEra> IndicesComoEram(TContexto& ctx, const std::string& tabela,
                                            const std::vector<TIndice>& indices);

struct TFonte {
    std::string nome, texto;
};
std::vector<TFonte> GatilhosDaTabela(TContexto& ctx, const std::string& tabela);
/// What its columns have and the told definitions do not: identity, a collation, a default that the dictionary lacks.
std::vector<TFonte> PropriedadesPerdidas(TContexto& ctx, const std::string& tabela);
/// Views, triggers, procedures and foreign keys of other tables that depend on it, each with its kind.
std::vector<std::string> DependentesDaTabela(TContexto& ctx, const std::string& tabela);

}  // namespace wkd
