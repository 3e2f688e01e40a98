#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "Campo.h"
#include "PropriedadeBinaria.h"

namespace wkd {

/// Change log of a binary packet: which row a row supersedes, and the values it takes over from it. Rows are
/// numbered from 0.
class THistoricoBinario {
  public:
    /// Takes the (row, predecessor, kind) triples of CHANGE_LOG, whatever their width.
    void Carrega(const TPropriedade& registro);
    bool TemAnterior(std::uint32_t linha) const { return anteriores_.contains(linha); }
    /// The field of that row is "not changed".
    void Pendente(std::uint32_t linha, std::uint16_t campo) { pendentes_[linha].push_back(campo); }
    /// Fills the pending fields from the predecessors, through as many of them as it takes; NULL when there is none.
    void Completa(std::vector<TLinha>& linhas, TOrcamento& orcamento, const char* onde);

  private:
    using TCampos = std::vector<std::uint16_t>;

    void Completa(std::uint32_t linha, std::vector<TLinha>& linhas, TOrcamento& orcamento, const char* onde);

    std::unordered_map<std::uint32_t, std::uint32_t> anteriores_;
    std::unordered_map<std::uint32_t, TCampos> pendentes_;
};

}  // namespace wkd
