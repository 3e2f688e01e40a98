#pragma once

#include <string>
#include <vector>

#include "Achado.h"
#include "DecisaoDaTabela.h"

namespace wkd {

/// An index that the dictionary of the package asks for.
struct TIndicePrevisto {
    std::string nome;
    bool unico = false;
    std::vector<std::string> colunas;
};

/// What an existing table holds that the change decided for it would not take: texts longer than the new size, values
/// that the new type cannot hold, rows without key value or with a repeated key. Reads through the rule by which rows
/// are copied, so that it finds what the copy would leave out. `novas`: the table's columns of the new dictionary.
TAchados ExaminaDados(TContexto& ctx, const std::string& tabela, const TDecisaoDaTabela& decisao,
                      const std::vector<TColunaDicionario>& novas, const std::vector<TIndicePrevisto>& indices);

/// Rows of a table and the bytes of their values.
struct TVolume {
    std::int64_t registros = 0, bytes = 0;
};
TVolume VolumeDaTabela(TContexto& ctx, const std::string& tabela);

}  // namespace wkd
