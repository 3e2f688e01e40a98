#include "context/MarcaDeAnalise.h"

#include "layout/Tini.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr std::size_t kLote = 50;  // marks removed with one commit

}  // namespace

TMarcasDeAnalise::TMarcasDeAnalise(TContexto& ctx) : ctx_(ctx), existeTini_(ctx.dm.ExisteTabela("TINI")) {
    if (!existeTini_) return;
    for (const auto& [secao, chave, valor] : Parametros(ctx_.Conexao(), {kSecaoDaAnalise, kSecaoDosRetirados}))
        if (secao == kSecaoDosRetirados)
            retirados_[ChaveDeNome(valor)].insert(ChaveDeNome(chave));
        else if (valor == kEmAnalise)
            marcadas_.insert(ChaveDeNome(chave));
    gravadas_ = marcadas_;
}

bool TMarcasDeAnalise::Marcada(std::string_view tabela) const { return marcadas_.contains(ChaveDeNome(tabela)); }

void TMarcasDeAnalise::Marca(std::string_view tabela) {
    if (!existeTini_) return;
    const std::string nome = ChaveDeNome(tabela);
    if (!gravadas_.contains(nome)) GravaParametro(kSecaoDaAnalise, nome, kEmAnalise, &ctx_.Conexao());
    gravadas_.insert(nome);
    marcadas_.insert(nome);
    std::erase(prontas_, nome);
}

void TMarcasDeAnalise::Antecipa(const std::vector<std::string>& tabelas) {
    if (!existeTini_) return;
    std::set<std::string> novas;
    for (const std::string& tabela : tabelas)
        if (!gravadas_.contains(ChaveDeNome(tabela))) novas.insert(ChaveDeNome(tabela));
    std::vector<TParametro> marcas;
    for (const std::string& nome : novas)
        marcas.push_back({std::string(kSecaoDaAnalise), nome, std::string(kEmAnalise)});
    TTransacao transacao(ctx_.Conexao());
    IncluiParametros(ctx_.Conexao(), marcas);
    transacao.Commit();
    gravadas_.merge(novas);
}

void TMarcasDeAnalise::Desmarca(std::string_view tabela) {
    const std::string nome = ChaveDeNome(tabela);
    marcadas_.erase(nome);
    if (gravadas_.erase(nome) > 0) prontas_.push_back(nome);
    if (prontas_.size() >= kLote) Conclui();
}

const std::set<std::string>& TMarcasDeAnalise::Retirados(std::string_view tabela) const {
    static const std::set<std::string> kNenhum;
    const auto daTabela = retirados_.find(ChaveDeNome(tabela));
    return daTabela == retirados_.end() ? kNenhum : daTabela->second;
}

void TMarcasDeAnalise::EsqueceRetirados(std::string_view tabela) {
    if (const auto daTabela = retirados_.extract(ChaveDeNome(tabela)); daTabela)
        ApagaRetirados(ctx_.Conexao(), daTabela.mapped());
}

void TMarcasDeAnalise::Conclui() {
    ApagaParametros(ctx_.Conexao(), kSecaoDaAnalise, prontas_);
    prontas_.clear();
}

}  // namespace wkd
