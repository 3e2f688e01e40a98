#include "IndicesPrimarios.h"

#include "Texto.h"
#include "Tolera.h"

namespace wkd {

namespace {

void VerificaTabela(TContexto& ctx, const std::string& tabela, bool temChave) {
    ITela& tela = ctx.Tela();
    if (!temChave && !ctx.dm.Atualiza.CriaIndicePrimario(tabela, false)) {
        tela.Memo2("Tabela: " + tabela + " NÃO POSSUI INDICE PRIMARIO");
        tela.SetLog("Tabela: ", tabela + " - NÃO POSSUI INDICE PRIMARIO", "");
    }
    tela.LblAtual("Verificando indices primarios: Tabela :" + tabela);
}

}  // namespace

void verificaIndicesPrimarios(TContexto& ctx) {
    TClientDataSet& tabelas = ctx.dm.SArquivoNovo;
    IBarra& barra = ctx.Tela().PbGeral();
    barra.Define(0, static_cast<int>(tabelas.RecordCount()), 1, 0);
    ctx.Tela().LblAtual("Verificando indices primarios...");
    const TChavesPorTabela chaves = ctx.Conexao().TodasAsChaves();
    int linha = 0;
    for (tabelas.First(); !tabelas.Eof(); tabelas.Next()) {
        barra.Posicao(++linha);
        const std::string tabela = tabelas.Texto("nome_arquivo");
        Tolera([&] { VerificaTabela(ctx, tabela, chaves.contains(ChaveDeNome(tabela))); });
    }
}

}  // namespace wkd
