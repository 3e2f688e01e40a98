#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>

#include "datamodule/DataModulo.h"

// Indexes that a release takes out of SINDSEC: nobody would know afterwards that they were the dictionary's. Those that
// the database has are kept in TINI, in a section of their own (key: the index, value: its table), until the step of
// their table drops them.

namespace wkd {

inline constexpr std::string_view kSecaoDosRetirados = "IndiceRetirado";

/// Index names by table, all in capitals.
using TIndicesRetirados = std::map<std::string, std::set<std::string>>;

/// The indexes of the stored SINDSEC that are not among the rows that will take its place. Nothing without TINI.
TIndicesRetirados RetiradosPor(TDataModulo& dm, const TTabelaEmMemoria& nova);
/// In the open transaction.
void GravaRetirados(TConnection& conexao, const TIndicesRetirados& retirados);
void ApagaRetirados(TConnection& conexao, const std::set<std::string>& nomes);

}  // namespace wkd
