#include "CorrecaoCodReceber.h"

#include <algorithm>
#include <vector>

#include "TBComandos.h"
#include "Texto.h"
#include "Tolera.h"

namespace wkd {

namespace {

constexpr std::string_view kIndice = "TCRTLCHQ_CODIGO";

/// The dictionary does not know this index. An earlier run may have been ended between its drop and its creation.
void RefazIndice(TContexto& ctx) {
    const auto indices = ctx.Conexao().Indices("TCRTLCHQ");
    if (!ctx.dm.ExisteTabela("TCRTLCHQ") ||
        std::ranges::any_of(indices, [](const TIndice& indice) { return IgualSemCaixa(indice.nome, kIndice); }))
        return;
    Tolera([&] {
        ctx.Conexao().ExecuteDirect("create INDEX TCRTLCHQ_CODIGO on TCRTLCHQ (COD_EMPRESA, COD_RELACIONA, TIPO)");
    });
}

void Relata(TContexto& ctx, const std::string& tabela, const std::string& erro) {
    ctx.Tela().Memo2("Tabela: " + tabela + " - " + erro);
    ctx.Tela().SetLog(erro, tabela, "AjustaCodReceber");
}

/// The primary key as the dictionary has it; where it has none, the one that was there.
void RefazChave(TContexto& ctx, const std::string& tabela, const TChavePrimaria& antes) {
    TTB& tb = ctx.dm.Atualiza;
    if (tb.CriaIndicePrimario(tabela, false)) return;
    const std::string erro = tb.Erro();
    if (antes.nome.empty() || !tb.ColunasDaChave(tabela).empty()) return Relata(ctx, tabela, erro);
    std::vector<std::string> colunas;
    for (const auto& coluna : antes.colunas) colunas.push_back(Identificador(coluna, ctx.Banco()));
    const TResultado refeita =
        ctx.dm.Executa("alter table " + tabela + " add constraint " + Identificador(antes.nome, ctx.Banco()) +
                       " primary key (" + Junta(colunas, ",") + ")");
    if (!refeita) Relata(ctx, tabela, refeita.Mensagem());
}

void RefazChaveEIndices(TContexto& ctx, const std::string& tabela, const TChavePrimaria& antes) {
    if (!ctx.dm.ExisteTabela(tabela)) return;
    RefazChave(ctx, tabela, antes);
    if (!ctx.dm.Atualiza.CriaIndiceSecundarios(tabela)) Relata(ctx, tabela, ctx.dm.Atualiza.Erro());
}

}  // namespace

void AjustaCodReceber(TContexto& ctx, std::span<const TTextoPorTipo> passos) {
    const TChavePrimaria deTcrtlchq = ctx.Conexao().ChavePrimaria("TCRTLCHQ");
    const TChavePrimaria deTchqcanc = ctx.Conexao().ChavePrimaria("TCHQCANC");
    try {
        for (const TTextoPorTipo& passo : passos)
            if (const auto comando = passo.Para(ctx.Banco()); !comando.empty()) ctx.Conexao().ExecuteDirect(comando);
    } catch (...) {
        RefazChaveEIndices(ctx, "TCRTLCHQ", deTcrtlchq);
        RefazChaveEIndices(ctx, "TCHQCANC", deTchqcanc);
        RefazIndice(ctx);
        throw;
    }
}

}  // namespace wkd
