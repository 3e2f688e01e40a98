#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace wkd {

struct TAlias;

/// Driver parameters in the order they were added, such as "User_Name=...", "Database=...".
class TParametrosConexao {
  public:
    void Adiciona(std::string_view chave, std::string_view valor) { pares_.emplace_back(chave, valor); }
    /// Value of the first parameter of that name, letter case ignored; empty when there is none.
    std::string Valor(std::string_view chave) const;
    const std::vector<std::pair<std::string, std::string>>& Pares() const { return pares_; }

  private:
    std::vector<std::pair<std::string, std::string>> pares_;
};

/// Parameters of the alias's driver; none for a kind without driver.
TParametrosConexao ParametrosDoAlias(const TAlias& alias);

}  // namespace wkd
