#include "context/MarcaDeAnalise.h"

#include "layout/Tini.h"
#include "rows/WKDQuery.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr std::string_view kSecao = "AtualizaTabela";
constexpr std::size_t kLote = 50;  // marks removed with one commit

}  // namespace

TMarcasDeAnalise::TMarcasDeAnalise(TContexto& ctx) : ctx_(ctx), existeTini_(ctx.dm.ExisteTabela("TINI")) {
    if (!existeTini_) return;
    TWKDQuery q(ctx_.Conexao(), "select sessao, chave, valor from tini where sessao in (:pSESSAO, :pRETIRADOS)");
    q.Param("pSESSAO", kSecao).Param("pRETIRADOS", kSecaoDosRetirados);
    for (q.Open(); !q.Eof(); q.Next()) {
        const std::string chave = ChaveDeNome(q.Texto("CHAVE"));
        if (AparaFim(q.Texto("SESSAO")) == kSecaoDosRetirados)
            retirados_[ChaveDeNome(q.Texto("VALOR"))].insert(chave);
        else if (q.Texto("VALOR") == "SIM")
            marcadas_.insert(chave);
    }
    gravadas_ = marcadas_;
}

bool TMarcasDeAnalise::Marcada(std::string_view tabela) const { return marcadas_.contains(ChaveDeNome(tabela)); }

void TMarcasDeAnalise::Marca(std::string_view tabela) {
    if (!existeTini_) return;
    const std::string nome = ChaveDeNome(tabela);
    if (!gravadas_.contains(nome)) GravaParametro(kSecao, nome, "SIM", &ctx_.Conexao());
    gravadas_.insert(nome);
    marcadas_.insert(nome);
    std::erase(prontas_, nome);
}

void TMarcasDeAnalise::Antecipa(const std::vector<std::string>& tabelas) {
    if (!existeTini_) return;
    std::set<std::string> novas;
    for (const std::string& tabela : tabelas)
        if (!gravadas_.contains(ChaveDeNome(tabela))) novas.insert(ChaveDeNome(tabela));
    TTransacao transacao(ctx_.Conexao());
    TWKDQuery q(ctx_.Conexao(), "INSERT INTO TINI(SESSAO ,CHAVE ,VALOR) VALUES (:pSESSAO,:pCHAVE, 'SIM')");
    q.Param("pSESSAO", kSecao);
    for (const std::string& nome : novas) q.Param("pCHAVE", nome).ExecSQL();
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
    if (prontas_.empty()) return;
    std::vector<std::string> nomes;
    for (const std::string& nome : prontas_) nomes.push_back(Aspas(nome));
    ExecutaComando(ctx_.Conexao(),
                   "delete from tini where sessao = " + Aspas(kSecao) + " and chave in (" + Junta(nomes, ", ") + ")");
    prontas_.clear();
}

}  // namespace wkd
