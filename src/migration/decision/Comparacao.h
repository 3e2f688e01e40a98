#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "connection/Connection.h"
#include "tables/DefinicaoCampo.h"

namespace wkd {

/// A statement that waits to be executed on a table.
struct TComandoPendente {
    std::string texto;
    std::string alternativa;  // tried when the server refuses the syntax of `texto`; empty: none
    bool mudaChave = false;   // alters a column of the primary key
    std::string coluna = {};  // whose type it changes, or that it drops

    bool operator==(const TComandoPendente&) const = default;
};

/// What is to be done about one column, and why.
struct TDecisaoDaColuna {
    std::vector<TComandoPendente> comandos;
    bool reconstroi = false;
    bool acrescenta = false;  // the column is new: its dictionary row is copied, too
    std::string motivo;       // of the rebuild
};

/// What the database physically has of one column.
struct TFatosFisicos {
    const TColunaFisica* coluna = nullptr;  // null: there is no such column
    bool temporaria = false;                // an earlier run left its "_TMP" column behind
    bool naChave = false;                   // in the physical primary key
    bool inacabada = false;                 // the table's last update did not come through: what is stored may be ahead
};

/// Compares a column of the package with the stored one (null: there is none) and the physical one. Pure: what comes
/// back is a plan. A stored text size counts as no more than the physical size, and a physical column of another family
/// (integer, floating, text, blob) than its stored type counts as that family, so that an interrupted alteration is
/// seen.
TDecisaoDaColuna ComparaColuna(std::string_view tabela, const TColunaDicionario& nova, const TColunaDicionario* velha,
                               const TFatosFisicos& fisica, TTipoBanco banco);

/// The same for a table that is never rebuilt: whatever would rebuild it is tried in place.
TDecisaoDaColuna ComparaNoLugar(std::string_view tabela, const TColunaDicionario& nova, const TColunaDicionario* velha,
                                const TFatosFisicos& fisica, TTipoBanco banco);

/// Whether the change of an existing column needs exclusive use of the database.
bool MudancaExclusiva(const TColunaDicionario& nova, const TColunaDicionario& velha);

}  // namespace wkd
