#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "packet/DataPacket.h"

namespace wkd {

/// The packets of a package that hold the new dictionary; without them it is none.
inline constexpr std::string_view kSarquivo = "SARQUIVO.WKD", kSatrib = "SAtrib.WKD";

/// Reads the packet of that role. Throws TErroPacote when there is none (`arquivo` empty), when it lacks a column that
/// an update needs, and when it has no rows.
TDataPacket LeSarquivo(const std::filesystem::path& arquivo);
TDataPacket LeSatrib(const std::filesystem::path& arquivo);

/// The tables of the dictionary, which every package fills anew; the rows of others are the customer's.
inline constexpr std::string_view kTabelasDoDicionario[] = {
    "SARQUIVO", "SATRIB",  "SINDSEC",  "SINDSECA",           "SLOOKUP",        "SPESQ",
    "SPESQAUX", "SADMMOD", "SRELATOR", "SARQ_RELACIONA_PAI", "SLISTA_CONTROLE"};
bool TabelaDoDicionario(std::string_view nome);

/// Row of a packet that names a table, physical column or index by more than a name.
struct TLinhaRecusada {
    std::string tabela;  // that it is about; may be empty
    std::string texto;   // packet, row, and what is wrong
};
/// Takes them out of the rows of the dictionary table `tabela`. A column of a key takes all columns of its table along,
/// a column of an index those of the index: the rest would be another key or index.
std::vector<TLinhaRecusada> RecusaNomes(TTabelaEmMemoria& linhas, std::string_view tabela,
                                        const std::filesystem::path& arquivo);

}  // namespace wkd
