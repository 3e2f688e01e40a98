#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "connection/Connection.h"

namespace wkd {

/// Rows whose values pass the client, many in one statement: over a network, a row is then no round trip.
class TInsercaoEmBloco {
  public:
    /// At most `maximo` rows a statement. Columns as statements take them.
    TInsercaoEmBloco(TConnection& conexao, std::string destino, std::vector<TColunaFisica> colunas, std::size_t maximo);

    /// Rows that one statement takes; 1 where the server has none for more.
    std::size_t Lugares() const { return lugares_; }
    /// Stores so many rows: all of them, or none and TErroBanco or TErroConversao.
    void Grava(const std::vector<const TLinha*>& linhas);

  private:
    std::unique_ptr<TComando> Prepara(std::size_t linhas);

    TConnection& conexao_;
    std::string destino_;
    std::vector<TColunaFisica> colunas_;
    std::size_t lugares_ = 1, noResto_ = 0;
    std::unique_ptr<TComando> cheio_, resto_;  // the second one for `noResto_` rows: batches end alike
};

}  // namespace wkd
