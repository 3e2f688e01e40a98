#include "Deteccao.h"

#include "Comparacao.h"
#include "Texto.h"

namespace wkd {

namespace {

/// Lookup and calculated columns are not examined, nor is a column that the database does not know yet.
bool Examina(const TColunaComparada& nova) { return Apara(nova.lookup).empty() && !nova.Calculada(); }

std::string Linha(const TClientDataSet& novo, const TClientDataSet& velho) {
    return "Tabela = " + novo.Texto("arquivo") + " | Campo = " + novo.Texto("nome") + " de " + velho.Texto("Tipo") +
           "(" + velho.Texto("TAMANHO") + ") para " + novo.Texto("Tipo") + "(" + novo.Texto("tamanho") + ")";
}

bool ColunaPodeMudar(TContexto& ctx) {
    const auto nova = ColunaDe(ctx.dm.SatribNovo);
    if (!nova || !Examina(*nova)) return true;
    const auto velha = ColunaDe(ctx.dm.SatribVelho);
    return !velha || !MudancaExclusiva(*nova, *velha);
}

}  // namespace

std::vector<TMudancaExclusiva> MudancasExclusivas(TContexto& ctx) {
    std::vector<TMudancaExclusiva> mudancas;
    TClientDataSet& tabelas = ctx.dm.SArquivoNovo;
    TClientDataSet& colunas = ctx.dm.SatribNovo;
    for (tabelas.First(); !tabelas.Eof(); tabelas.Next()) {
        for (colunas.First(); !colunas.Eof(); colunas.Next()) {
            ctx.Tela().ProcessaMensagens();
            if (!ColunaPodeMudar(ctx))
                mudancas.push_back({tabelas.Texto("nome_arquivo"), Linha(colunas, ctx.dm.SatribVelho)});
        }
    }
    return mudancas;
}

bool VerificaAtualizacao(TContexto& ctx) {
    const auto mudancas = MudancasExclusivas(ctx);
    for (const auto& mudanca : mudancas) ctx.Tela().Memo1(mudanca.linha);
    return mudancas.empty();
}

}  // namespace wkd
