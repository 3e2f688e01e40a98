#include "LookupFisico.h"

#include <algorithm>
#include <utility>
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

using TCampos = std::vector<std::pair<std::string, std::string>>;  // parent and child

TCampos CamposLigados(TWKDQuery& slookup, const TColunaLookup& coluna) {
    TCampos campos;
    slookup.Param("pArquivo", coluna.tabela).Param("pCampo", coluna.nome);
    for (slookup.Open(); !slookup.Eof(); slookup.Next())
        campos.emplace_back(slookup.Texto("campopai"), slookup.Texto("campofilho"));
    return campos;
}

/// As the subquery compares them.
std::string Condicao(const TCampos& campos, const TColunaLookup& coluna) {
    std::vector<std::string> partes;
    for (const auto& [pai, filho] : campos)
        partes.push_back("(" + coluna.tabela + "." + pai + " = " + coluna.lookup + "." + filho + ")");
    return Junta(partes, " and ");
}

/// Whether the names may stand in a statement. A lookup without a field to take fails by itself.
bool Aceita(TContexto& ctx, const TColunaLookup& coluna, const TCampos& campos) {
    std::vector<std::string> nomes = {coluna.tabela, coluna.nome, coluna.lookup, coluna.retorno};
    for (const auto& [pai, filho] : campos) nomes.insert(nomes.end(), {pai, filho});
    const std::string parte = "lookup " + coluna.nome;
    return std::ranges::all_of(nomes, [&](const auto& nome) {
        return Apara(nome).empty() || ctx.dm.Atualiza.Dicionario().Aceita(coluna.tabela, parte, nome);
    });
}

/// In a table that is its own lookup table both sides of the condition would be the same row.
bool ConsultaASiMesma(const TColunaLookup& coluna) { return ChaveDeNome(coluna.tabela) == ChaveDeNome(coluna.lookup); }

void Ajusta(TContexto& ctx, TWKDQuery& slookup, const TColunaLookup& coluna) {
    const std::string nome = coluna.tabela + "." + coluna.nome;
    if (ConsultaASiMesma(coluna)) {
        ctx.Tela().Memo1("Lookup " + nome + " não ajustado: a tabela de lookup é a própria tabela");
        return;
    }
    const TCampos campos = CamposLigados(slookup, coluna);
    if (!Aceita(ctx, coluna, campos)) return;
    Tolera([&] {
        ExecutaComando(ctx.Conexao(), "update " + coluna.tabela + " set " + coluna.nome + " = (select " +
                                          coluna.retorno + " from " + coluna.lookup + " where " +
                                          Condicao(campos, coluna) + ") ");
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
