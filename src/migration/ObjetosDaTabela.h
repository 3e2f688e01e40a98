#pragma once

#include <string>
#include <vector>

#include "Contexto.h"

namespace wkd {

/// What goes with a table when it is dropped, and what keeps it from being dropped, from the server's catalogue. Table
/// names in capitals. Empty answers on servers whose catalogue is not known here.

/// Statements that give the table again what SINDSEC and the dictionary do not know: indexes and grants. `nome` is the
/// table's as the package writes it, by which its indexes are looked up in SINDSEC.
std::vector<std::string> ComandosDeDevolucao(TContexto& ctx, const std::string& nome);

struct TFonte {
    std::string nome, texto;
};
std::vector<TFonte> GatilhosDaTabela(TContexto& ctx, const std::string& tabela);
/// Its foreign-key, unique and check constraints.
std::vector<TFonte> RestricoesDaTabela(TContexto& ctx, const std::string& tabela);
/// Views, triggers, procedures and foreign keys of other tables that depend on it, each with its kind.
std::vector<std::string> DependentesDaTabela(TContexto& ctx, const std::string& tabela);

/// The statements are kept on the backup table, behind its mark, from before the drop to the end of the rebuild.
void GuardaDevolucoes(TContexto& ctx, const std::string& backup, const std::vector<std::string>& comandos);
std::vector<std::string> DevolucoesGuardadas(TContexto& ctx, const std::string& backup);

}  // namespace wkd
