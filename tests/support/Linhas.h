#pragma once

#include <string>
#include <string_view>

#include "rows/WKDQuery.h"

namespace wkd {

/// Rows of a query as "1|A;2|<null>".
inline std::string Linhas(TConnection& conexao, std::string_view sql) {
    std::string texto;
    TWKDQuery q(conexao, sql);
    for (q.Open(); !q.Eof(); q.Next()) {
        texto += texto.empty() ? "" : ";";
        for (std::size_t i = 0; i < q.Campos().size(); ++i) {
            const TValor valor = q.Comando().Valor(i);
            texto += (i ? "|" : "") + (valor.Nulo() ? "<null>" : valor.ComoTexto());
        }
    }
    return texto;
}

}  // namespace wkd
