#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "connection/Connection.h"
#include "rows/ClientDataSet.h"
#include "tables/DefinicaoCampo.h"

namespace wkd {

/// A dictionary row of one column as the comparison sees it.
struct TColunaComparada : TColunaDicionario {
    std::string lookup;  // lookup table, empty for other columns

    /// Size and key mark as integers; 0 when empty or not a number.
    std::int64_t Tamanho() const;
    bool Calculada() const;
};

/// The current row of a column-dictionary dataset; nothing when it has no row.
std::optional<TColunaComparada> ColunaDe(const TClientDataSet& satrib);

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

/// Compares a column of the package with the stored one and the physical one. Pure: what comes back is a plan.
/// A stored text size counts as no more than the physical size, and a physical column of another family (integer,
/// floating, text, blob) than its stored type counts as that family, so that an interrupted alteration is seen.
TDecisaoDaColuna ComparaColuna(std::string_view tabela, const TColunaComparada& nova,
                               const std::optional<TColunaComparada>& velha, const TFatosFisicos& fisica,
                               TTipoBanco banco);

/// The same for a table that is never rebuilt: whatever would rebuild it is tried in place.
TDecisaoDaColuna ComparaNoLugar(std::string_view tabela, const TColunaComparada& nova,
                                const std::optional<TColunaComparada>& velha, const TFatosFisicos& fisica,
                                TTipoBanco banco);

/// Whether the change of an existing column needs exclusive use of the database.
bool MudancaExclusiva(const TColunaComparada& nova, const TColunaComparada& velha);

}  // namespace wkd
