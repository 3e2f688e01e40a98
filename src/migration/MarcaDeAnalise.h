#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Contexto.h"

namespace wkd {

/// Marks of tables under analysis, kept in TINI: a table whose mark was left behind by an interrupted run is analysed
/// by the next one whatever its version. Without TINI there are no marks.
class TMarcasDeAnalise {
  public:
    /// Reads the marks that are there, in one query.
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

  private:
    TContexto& ctx_;
    bool existeTini_;
    // Table names in capitals
    std::set<std::string> marcadas_;
    std::set<std::string> gravadas_;  // in TINI
    std::vector<std::string> prontas_;
};

}  // namespace wkd
