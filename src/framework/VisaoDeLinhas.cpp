#include "VisaoDeLinhas.h"

#include <algorithm>
#include <string>
#include <utility>

namespace wkd {

void TVisao::Monta(const TLinhas& linhas, std::vector<TIdLinha> ids, std::vector<std::size_t> camposDaOrdem) {
    ids_ = std::move(ids);
    ordem_ = std::move(camposDaOrdem);
    if (ordem_.empty() || ids_.size() < 2) return;
    std::vector<std::pair<std::string, TIdLinha>> chaves;
    chaves.reserve(ids_.size());
    for (TIdLinha id : ids_) chaves.emplace_back(ChaveDaLinha(linhas[id], ordem_), id);
    std::sort(chaves.begin(), chaves.end());
    std::transform(chaves.begin(), chaves.end(), ids_.begin(), [](const auto& chave) { return chave.second; });
}

std::optional<std::size_t> TVisao::Posicao(const TLinhas& linhas, TIdLinha id) const {
    const std::size_t lugar = Lugar(linhas, id);
    if (lugar == ids_.size() || ids_[lugar] != id) return std::nullopt;
    return lugar;
}

std::size_t TVisao::Inclui(const TLinhas& linhas, TIdLinha id) {
    const std::size_t lugar = Lugar(linhas, id);
    ids_.insert(ids_.begin() + static_cast<std::ptrdiff_t>(lugar), id);
    return lugar;
}

void TVisao::Exclui(std::size_t posicao) { ids_.erase(ids_.begin() + static_cast<std::ptrdiff_t>(posicao)); }

/// First position whose row does not come before the row `id`.
std::size_t TVisao::Lugar(const TLinhas& linhas, TIdLinha id) const {
    if (ordem_.empty()) return static_cast<std::size_t>(std::lower_bound(ids_.begin(), ids_.end(), id) - ids_.begin());
    const std::pair procurado(ChaveDaLinha(linhas[id], ordem_), id);
    const auto antes = [&](TIdLinha outro, const auto& chave) {
        return std::pair(ChaveDaLinha(linhas[outro], ordem_), outro) < chave;
    };
    return static_cast<std::size_t>(std::lower_bound(ids_.begin(), ids_.end(), procurado, antes) - ids_.begin());
}

}  // namespace wkd
