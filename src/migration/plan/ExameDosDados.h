#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "context/Contexto.h"
#include "decision/DecisaoDaTabela.h"

namespace wkd {

/// Something about a table that a person should know before it is touched.
struct TAchado {
    std::string tipo;    // one word for machines, such as "texto-longo"
    std::string coluna;  // or the columns, or an index; may be empty
    std::string texto;   // one sentence
    std::int64_t quantos = 0;
    std::vector<std::string> exemplos;  // a few keys, with the value where there is one
};
using TAchados = std::vector<TAchado>;

/// What an existing table holds that the change decided for it would not take: texts longer than the new size, values
/// that the new type cannot hold, rows without key value or with a repeated key. Reads through the rule by which rows
/// are copied, so that it finds what the copy would leave out. `novas`: the table's columns of the new dictionary.
TAchados ExaminaDados(TContexto& ctx, const std::string& tabela, const TDecisaoDaTabela& decisao,
                      const std::vector<TColunaDicionario>& novas, const std::vector<TIndiceDicionario>& indices);

/// Rows of a table and the bytes of their values.
struct TVolume {
    std::int64_t registros = 0, bytes = 0;
};
TVolume VolumeDaTabela(TContexto& ctx, const std::string& tabela);

}  // namespace wkd
