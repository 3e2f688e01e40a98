#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "context/Contexto.h"

namespace wkd {

/// The rows of "B" + table that a restore has to bring back.
struct TRestante {
    std::string condicao = {};  // alias and where clause of those that the table lacks by its key; empty: all
    std::string fonte = {};     // query, in parentheses, of those that the table lacks as a whole, in place of all
    std::int64_t pula = 0;      // rows at the beginning of the backup that are back
    bool conta = false;         // nothing else tells where a restore was broken off: it keeps count
    bool retomada = false;      // an earlier restore was broken off
    std::int64_t linhas = 0;    // how many
};

/// Of a table just created. `chaveAntiga`: primary key of the one whose rows the backup holds, if known.
TRestante RestauracaoInteira(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chaveAntiga);

/// Whether an earlier run broke off while it brought the rows of a table back. The table has been in use since: what
/// is in it stays, and the restore goes on where it stood.
bool RestauracaoInterrompida(TContexto& ctx, const std::string& tabela);
TRestante RestauracaoQueFalta(TContexto& ctx, const std::string& tabela);

/// Appends the rows of "B" + table to the table, its name in capitals: all of them, or what an interrupted restore
/// left. Expects SatribNovo on the table. Without a backup table there is a log entry. Returns the columns, in
/// capitals, whose values are changed on purpose. Throws when the restore cannot go on.
std::set<std::string> VoltaBackup(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chave,
                                  const TRestante& restante);

}  // namespace wkd
