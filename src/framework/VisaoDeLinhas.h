#pragma once

#include <optional>
#include <vector>

#include "LinhasDoDataSet.h"

namespace wkd {

/// The visible rows of a dataset in their order: by the key of some fields, compared as texts, else as they came.
class TVisao {
  public:
    /// `ids` ascending.
    void Monta(const TLinhas& linhas, std::vector<TIdLinha> ids, std::vector<std::size_t> camposDaOrdem);
    std::size_t Total() const { return ids_.size(); }
    TIdLinha operator[](std::size_t posicao) const { return ids_[posicao]; }
    std::optional<std::size_t> Posicao(const TLinhas& linhas, TIdLinha id) const;
    /// Puts the row in its place and returns the position.
    std::size_t Inclui(const TLinhas& linhas, TIdLinha id);
    void Exclui(std::size_t posicao);

  private:
    std::size_t Lugar(const TLinhas& linhas, TIdLinha id) const;

    std::vector<TIdLinha> ids_;
    std::vector<std::size_t> ordem_;
};

}  // namespace wkd
