#pragma once

#include <map>
#include <string>
#include <vector>

#include "Campo.h"

namespace wkd {

/// Column of a physical table.
struct TColunaFisica : TCampo {
    std::string tipoSql;    // as CREATE TABLE takes it, such as "varchar(50)", without default and null part
    std::string padrao;     // text of its default, such as "'A'"; empty without one
    std::string expressao;  // of a computed column; empty for a stored one
    std::string conjunto;   // character set of a text column in capitals, such as "NONE"; empty otherwise
};

/// Columns joined in key or index order.
struct TChavePrimaria {
    std::string nome;  // of the constraint; empty when the table has no primary key
    std::vector<std::string> colunas;
};

struct TIndice {
    std::string nome;
    bool unico = false;
    bool descendente = false;
    std::string restricao;  // name of the unique or foreign-key constraint the index belongs to, else empty
    std::vector<std::string> colunas;
    std::string expressao;  // of a computed index
};

using TColunasPorTabela = std::map<std::string, std::vector<TColunaFisica>>;
using TChavesPorTabela = std::map<std::string, TChavePrimaria>;

}  // namespace wkd
