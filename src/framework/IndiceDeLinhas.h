#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "Campo.h"

namespace wkd {

/// Number of a row in its dataset; in the order in which the rows came, never given twice.
using TIdLinha = std::uint32_t;

/// Text by which key values are compared: letter case, trailing blanks and trailing decimal zeros do not count;
/// NULL is the empty text.
std::string ChaveDeValor(const TValor& valor);
std::string ChaveDeValores(const TLinha& valores);
/// Key of the fields `campos` of the row.
std::string ChaveDaLinha(const TLinha& linha, const std::vector<std::size_t>& campos);

/// Hash index over some fields of the rows.
class TIndiceDeLinhas {
  public:
    explicit TIndiceDeLinhas(std::vector<std::size_t> campos) : campos_(std::move(campos)) {}

    void Inclui(TIdLinha id, const TLinha& linha);
    void Exclui(TIdLinha id, const TLinha& linha);
    /// Rows with that key, ascending.
    const std::vector<TIdLinha>& Procura(const std::string& chave) const;

  private:
    std::vector<std::size_t> campos_;
    std::unordered_map<std::string, std::vector<TIdLinha>> linhas_;
};

}  // namespace wkd
