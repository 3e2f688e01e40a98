#include "IndiceDeLinhas.h"

#include <algorithm>

#include "Texto.h"
#include "TextoDeNumero.h"

namespace wkd {

namespace {

constexpr char kSeparador = '\x1f';

}  // namespace

std::string ChaveDeValor(const TValor& valor) {
    if (const auto* texto = valor.Se<std::string>()) return ChaveDeNome(*texto);
    if (const auto* decimal = valor.Se<TDecimal>()) return TextoDoDecimal(SemZerosFinais(*decimal));
    return ChaveDeNome(valor.ComoTexto());
}

std::string ChaveDeValores(const TLinha& valores) {
    std::string chave;
    for (const TValor& valor : valores) chave += ChaveDeValor(valor) + kSeparador;
    return chave;
}

std::string ChaveDaLinha(const TLinha& linha, const std::vector<std::size_t>& campos) {
    std::string chave;
    for (std::size_t campo : campos) chave += ChaveDeValor(linha[campo]) + kSeparador;
    return chave;
}

void TIndiceDeLinhas::Inclui(TIdLinha id, const TLinha& linha) {
    auto& ids = linhas_[ChaveDaLinha(linha, campos_)];
    ids.insert(std::upper_bound(ids.begin(), ids.end(), id), id);
}

void TIndiceDeLinhas::Exclui(TIdLinha id, const TLinha& linha) {
    const auto grupo = linhas_.find(ChaveDaLinha(linha, campos_));
    if (grupo == linhas_.end()) return;
    auto& ids = grupo->second;
    const auto [inicio, fim] = std::equal_range(ids.begin(), ids.end(), id);
    ids.erase(inicio, fim);
    if (ids.empty()) linhas_.erase(grupo);
}

const std::vector<TIdLinha>& TIndiceDeLinhas::Procura(const std::string& chave) const {
    static const std::vector<TIdLinha> kNenhuma;
    const auto grupo = linhas_.find(chave);
    return grupo == linhas_.end() ? kNenhuma : grupo->second;
}

}  // namespace wkd
