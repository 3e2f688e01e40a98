#include "MarcaDeAnalise.h"

#include "Texto.h"
#include "Tini.h"
#include "WKDQuery.h"

namespace wkd {

namespace {

constexpr std::string_view kSecao = "AtualizaTabela";

}  // namespace

TMarcasDeAnalise::TMarcasDeAnalise(TContexto& ctx) : ctx_(ctx), existeTini_(ctx.dm.ExisteTabela("TINI")) {
    if (!existeTini_) return;
    TWKDQuery q(ctx_.Conexao(), "select chave, valor from tini where sessao = :pSESSAO");
    q.Param("pSESSAO", kSecao);
    for (q.Open(); !q.Eof(); q.Next())
        if (q.Texto("VALOR") == "SIM") marcadas_.insert(ChaveDeNome(q.Texto("CHAVE")));
}

bool TMarcasDeAnalise::Marcada(std::string_view tabela) const { return marcadas_.contains(ChaveDeNome(tabela)); }

void TMarcasDeAnalise::Marca(std::string_view tabela) {
    if (!existeTini_ || Marcada(tabela)) return;
    GravaParametro(kSecao, Maiusculas(tabela), "SIM", &ctx_.Conexao());
    marcadas_.insert(ChaveDeNome(tabela));
}

void TMarcasDeAnalise::Desmarca(std::string_view tabela) {
    if (!Marcada(tabela)) return;
    TWKDQuery q(ctx_.Conexao(), "delete from tini where sessao = :pSESSAO and chave = :pCHAVE");
    q.Param("pSESSAO", kSecao).Param("pCHAVE", Maiusculas(tabela)).ExecSQL();
    marcadas_.erase(ChaveDeNome(tabela));
}

}  // namespace wkd
