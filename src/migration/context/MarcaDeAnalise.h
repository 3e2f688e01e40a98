#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "context/Contexto.h"
#include "layout/IndicesRetirados.h"

namespace wkd {

/// Section of TINI with the marks, by table in capitals, and what a mark says there.
inline constexpr std::string_view kSecaoDaAnalise = "AtualizaTabela", kEmAnalise = "SIM";

/// Marks of tables under analysis, kept in TINI: a table whose mark was left behind, by an interrupted run or by one in
/// which something of the table failed, is analysed by the next one whatever its version. Without TINI there are none.
class TMarcasDeAnalise {
  public:
    /// Reads the marks that are there, and the indexes that releases took out of SINDSEC, in one query.
    explicit TMarcasDeAnalise(TContexto& ctx);

    bool Marcada(std::string_view tabela) const;
    void Marca(std::string_view tabela);
    /// The mark goes with those of the next tables: an end that comes first has the table analysed once more.
    void Desmarca(std::string_view tabela);
    /// Writes the marks of tables that are all to be analysed at once, one commit for all. To Marcada they are not
    /// marked.
    void Antecipa(const std::vector<std::string>& tabelas);
    /// Removes the marks that still wait for it.
    void Conclui();

    /// Names, in capitals, of the table's indexes that were in an older SINDSEC and wait to be dropped.
    const std::set<std::string>& Retirados(std::string_view tabela) const;
    void EsqueceRetirados(std::string_view tabela);

  private:
    TContexto& ctx_;
    bool existeTini_;
    // Table names in capitals
    std::set<std::string> marcadas_;
    std::set<std::string> gravadas_;  // in TINI
    std::vector<std::string> prontas_;
    TIndicesRetirados retirados_;
};

}  // namespace wkd
