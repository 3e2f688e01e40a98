#pragma once

#include <optional>
#include <string>
#include <vector>

#include "copy/CopiaNoServidor.h"

namespace wkd {

/// Rows named by a key of one whole number: those that follow one another go in one `insert ... select` of the range
/// that they span. A row of which something is to be completed needs the client.
class TCopiaPorFaixas : public TCopiaNoServidor {
  public:
    /// The column that tells the rows of the source, as statements take it: that of its primary key or, in a backup
    /// table, one in which no two rows share a value; it gets an index there. Nothing where there is none, where
    /// every row is to be completed, and for a copy that reads a part of the source or counts its rows: an earlier one
    /// may have begun in another order.
    static std::optional<std::string> ColunaDaFaixa(TConnection& conexao, const TCopia& copia,
                                                    const std::vector<TColunaDaCopia>& colunas);

    /// Throws TErroBanco for a statement that the server does not take.
    TCopiaPorFaixas(TConnection& conexao, const TCopia& copia, const std::vector<TColunaDaCopia>& colunas,
                    const std::string& chave);

    std::string Chave() override;
    bool Sozinho() const override { return true; }
    std::set<std::string> Copia(std::span<const std::string_view> chaves, std::string_view faltas,
                                TRenumeracao& renumeracao) override;

  private:
    TValor ValorDaChave(std::string_view chave) const override;

    std::string origem_;
};

}  // namespace wkd
