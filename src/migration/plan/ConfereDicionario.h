#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "datamodule/DataModulo.h"

namespace wkd {

/// Something in which the physical database is not what its stored dictionary says.
struct TDesvio {
    std::string tipo;  // one word for machines, such as "coluna-falta"
    std::string tabela;
    std::string objeto;  // column or index; may be empty
    std::string texto;   // one sentence
};

/// Compares the tables, columns, keys and indexes of the database with SARQUIVO, SATRIB, SINDSEC and SINDSECA, and
/// looks for what rebuilds left behind, in the database and in the rejects file of the program's folder. Changes
/// nothing. Throws TErroBanco, std::system_error.
std::vector<TDesvio> ConfereDicionario(TDataModulo& dm, const std::filesystem::path& pastaPrograma);

}  // namespace wkd
