#pragma once

#include <set>
#include <string>
#include <string_view>

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
    void Desmarca(std::string_view tabela);

  private:
    TContexto& ctx_;
    bool existeTini_;
    std::set<std::string> marcadas_;  // in capitals
};

}  // namespace wkd
