#include "IndicesPrimarios.h"

#include "Tolera.h"

namespace wkd {

namespace {

void VerificaTabela(TContexto& ctx, const std::string& tabela) {
    ITela& tela = ctx.Tela();
    if (!ctx.dm.Atualiza.ExisteIndicePrimario(tabela) && !ctx.dm.Atualiza.CriaIndicePrimario(tabela, false)) {
        tela.SetLog("Tabela: ", tabela + " - NÃO POSSUI INDICE PRIMARIO", "");
        tela.Memo2("Tabela: " + tabela + " NÃO POSSUI INDICE PRIMARIO");
    }
    tela.LblAtual("Verificando indices primarios: Tabela :" + tabela);
}

}  // namespace

void verificaIndicesPrimarios(TContexto& ctx) {
    TClientDataSet& tabelas = ctx.dm.SArquivoNovo;
    IBarra& barra = ctx.Tela().PbGeral();
    barra.Define(0, static_cast<int>(tabelas.RecordCount()), 1, 0);
    ctx.Tela().LblAtual("Verificando indices primarios...");
    int linha = 0;
    for (tabelas.First(); !tabelas.Eof(); tabelas.Next()) {
        barra.Posicao(++linha);
        Tolera([&] { VerificaTabela(ctx, tabelas.Texto("nome_arquivo")); });
    }
}

}  // namespace wkd
