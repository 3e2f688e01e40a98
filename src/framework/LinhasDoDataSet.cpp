#include "LinhasDoDataSet.h"

namespace wkd {

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

}  // namespace wkd
