#include "LookupFisico.h"

#include <vector>

#include "Texto.h"
#include "Tini.h"
#include "Tolera.h"
#include "WKDQuery.h"

namespace wkd {

namespace {

constexpr std::string_view kSecao = "HBN4";
constexpr std::string_view kFlag = "LOOKUPFISICO";

struct TColunaLookup {
    std::string tabela, nome, lookup, retorno;
};

std::vector<TColunaLookup> ColunasLookup(TConnection& conexao) {
    std::vector<TColunaLookup> colunas;
    TWKDQuery q(conexao, "select * from satrib where coalesce(lookup_arquivo, :p1) <> :p1");
    q.Param("p1", "");
    for (q.Open(); !q.Eof(); q.Next())
        colunas.push_back(
            {q.Texto("arquivo"), q.Texto("nome"), q.Texto("lookup_arquivo"), q.Texto("lookup_cp_retorno")});
    return colunas;
}

/// Pairs of parent and child fields, as the subquery compares them.
std::string Condicao(TWKDQuery& slookup, const TColunaLookup& coluna) {
    std::string condicao;
    slookup.Param("pArquivo", coluna.tabela).Param("pCampo", coluna.nome);
    for (slookup.Open(); !slookup.Eof(); slookup.Next()) {
        if (!condicao.empty()) condicao += " and ";
        condicao += "(" + coluna.tabela + "." + slookup.Texto("campopai") + " = " + coluna.lookup + "." +
                    slookup.Texto("campofilho") + ")";
    }
    return condicao;
}

/// In a table that is its own lookup table both sides of the condition would be the same row.
bool ConsultaASiMesma(const TColunaLookup& coluna) { return ChaveDeNome(coluna.tabela) == ChaveDeNome(coluna.lookup); }

void Ajusta(TContexto& ctx, TWKDQuery& slookup, const TColunaLookup& coluna) {
    const std::string nome = coluna.tabela + "." + coluna.nome;
    if (ConsultaASiMesma(coluna)) {
        ctx.Tela().Memo1("Lookup " + nome + " não ajustado: a tabela de lookup é a própria tabela");
        return;
    }
    const std::string condicao = Condicao(slookup, coluna);
    Tolera([&] {
        ExecutaComando(ctx.Conexao(), "update " + coluna.tabela + " set " + coluna.nome + " = (select " +
                                          coluna.retorno + " from " + coluna.lookup + " where " + condicao + ") ");
    });
    ctx.Tela().Memo1("Ajustando Lookup " + nome);
}

}  // namespace

void AtualizaLookupFisico(TContexto& ctx) {
    if (LeParametro(kSecao, kFlag, "NAO", &ctx.Conexao()) == "SIM") return;
    const auto colunas = ColunasLookup(ctx.Conexao());
    TWKDQuery slookup(ctx.Conexao(), "select * from slookup where arquivo = :pArquivo and campo =:pCampo");
    IBarra& barra = ctx.Tela().PbAtual();
    barra.Define(0, static_cast<int>(colunas.size()), 10, 0);
    for (const TColunaLookup& coluna : colunas) {
        Ajusta(ctx, slookup, coluna);
        barra.Posicao(barra.Posicao() + 1);
    }
    GravaParametro(kSecao, kFlag, "SIM", &ctx.Conexao());
}

}  // namespace wkd
