#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Campo.h"

namespace wkd {

class TClientDataSet;
class TConnection;

/// Rows of the column dictionary by table, in SEQUENCIA order.
class TCacheSatrib {
  public:
    /// Reads SATRIB; a database without it leaves the cache empty. Throws TErroBanco.
    void Carrega(TConnection& conexao);
    void Esquece();
    bool Carregado() const { return carregado_; }
    /// Makes `alvo` a copy of the rows of one table. A database without SATRIB leaves it closed.
    void Copia(std::string_view tabela, TClientDataSet& alvo) const;

  private:
    bool carregado_ = false;
    std::vector<TCampo> campos_;
    std::unordered_map<std::string, std::vector<TLinha>> linhas_;  // by ChaveDeNome(ARQUIVO)
};

}  // namespace wkd
