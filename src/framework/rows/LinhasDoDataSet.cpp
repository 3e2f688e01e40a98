#include "rows/LinhasDoDataSet.h"

#include <algorithm>
#include <string>
#include <utility>

#include "values/Texto.h"
#include "values/TextoDeNumero.h"

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

void TLinhas::Carrega(std::vector<TLinha> linhas) {
    registros_.clear();
    pendentes_.clear();
    indices_.clear();
    registros_.reserve(linhas.size());
    for (TLinha& linha : linhas) registros_.push_back({std::move(linha), nullptr, TSituacao::Intacta, 0});
}

bool TLinhas::Existe(TIdLinha id) const {
    const TSituacao situacao = registros_[id].situacao;
    return situacao != TSituacao::Excluida && situacao != TSituacao::Removida;
}

const TIndiceDeLinhas& TLinhas::Indice(const std::vector<std::size_t>& campos) {
    const auto pronto = indices_.find(campos);
    if (pronto != indices_.end()) return pronto->second;
    TIndiceDeLinhas& indice = indices_.emplace(campos, TIndiceDeLinhas(campos)).first->second;
    for (TIdLinha id = 0; id < registros_.size(); ++id)
        if (Existe(id)) indice.Inclui(id, registros_[id].linha);
    return indice;
}

TIdLinha TLinhas::Acrescenta(TLinha linha) {
    const auto id = static_cast<TIdLinha>(registros_.size());
    registros_.push_back({std::move(linha), nullptr, TSituacao::Intacta, 0});
    IncluiNosIndices(id);
    return id;
}

void TLinhas::Esquece(TIdLinha id) {
    ExcluiDosIndices(id);
    Marca(id, TSituacao::Removida);
}

TIdLinha TLinhas::Inclui(TLinha linha) {
    const TIdLinha id = Acrescenta(std::move(linha));
    Marca(id, TSituacao::Inserida);
    return id;
}

void TLinhas::Altera(TIdLinha id, TLinha linha) {
    TRegistro& registro = registros_[id];
    if (registro.situacao == TSituacao::Inserida) return Troca(id, std::move(linha));
    if (linha == registro.Original()) return Desfaz(id);
    if (!registro.original) registro.original = std::make_unique<TLinha>(registro.linha);
    if (registro.situacao == TSituacao::Intacta) Marca(id, TSituacao::Alterada);
    Troca(id, std::move(linha));
}

void TLinhas::Exclui(TIdLinha id) {
    ExcluiDosIndices(id);
    const bool nova = registros_[id].situacao == TSituacao::Inserida;
    Marca(id, nova ? TSituacao::Removida : TSituacao::Excluida);
}

std::vector<TIdLinha> TLinhas::Pendentes() const {
    std::vector<TIdLinha> ids;
    ids.reserve(pendentes_.size());
    for (const auto& [ordem, id] : pendentes_) ids.push_back(id);
    return ids;
}

void TLinhas::Desfaz(TIdLinha id) {
    TRegistro& registro = registros_[id];
    if (registro.situacao == TSituacao::Intacta || registro.situacao == TSituacao::Removida) return;
    if (registro.situacao == TSituacao::Inserida) return Exclui(id);
    if (registro.situacao == TSituacao::Alterada) ExcluiDosIndices(id);
    if (registro.original) registro.linha = std::move(*registro.original);
    registro.original.reset();
    Marca(id, TSituacao::Intacta);
    IncluiNosIndices(id);
}

void TLinhas::Confirma() {
    for (TIdLinha id : Pendentes()) {
        registros_[id].original.reset();
        const bool excluida = registros_[id].situacao == TSituacao::Excluida;
        Marca(id, excluida ? TSituacao::Removida : TSituacao::Intacta);
    }
}

void TLinhas::Marca(TIdLinha id, TSituacao situacao) {
    TRegistro& registro = registros_[id];
    if (registro.ordem != 0) pendentes_.erase(registro.ordem);
    registro.situacao = situacao;
    const bool pendente = situacao != TSituacao::Intacta && situacao != TSituacao::Removida;
    registro.ordem = pendente ? ++ultimaOrdem_ : 0;
    if (pendente) pendentes_.emplace(registro.ordem, id);
    if (situacao == TSituacao::Removida) TLinha().swap(registro.linha);
}

void TLinhas::Troca(TIdLinha id, TLinha linha) {
    ExcluiDosIndices(id);
    registros_[id].linha = std::move(linha);
    IncluiNosIndices(id);
}

void TLinhas::IncluiNosIndices(TIdLinha id) {
    for (auto& [campos, indice] : indices_) indice.Inclui(id, registros_[id].linha);
}

void TLinhas::ExcluiDosIndices(TIdLinha id) {
    for (auto& [campos, indice] : indices_) indice.Exclui(id, registros_[id].linha);
}

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
