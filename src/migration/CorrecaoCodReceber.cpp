#include "CorrecaoCodReceber.h"

#include <algorithm>
#include <vector>

#include "IndicesGuardados.h"
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

/// What the steps drop in the table, and what a run that was ended between them had dropped.
TIndicesGuardados Guarda(TContexto& ctx, const std::string& tabela) {
    TIndicesGuardados guardados(ctx, tabela, true);
    auto indices = ctx.Conexao().Indices(tabela);
    std::erase_if(indices, [](const TIndice& indice) { return !IgualSemCaixa(indice.nome, kIndice); });
    guardados.GuardaIndices(indices);
    guardados.GuardaChave(ctx.dm.Atualiza.ColunasDaChave(tabela));
    return guardados;
}

/// Key and indexes as the dictionary has them; what it has not, or cannot be made so, as it was.
void Refaz(TContexto& ctx, const std::string& tabela, TIndicesGuardados& guardados) {
    if (!ctx.dm.ExisteTabela(tabela)) return;
    TTB& tb = ctx.dm.Atualiza;
    const std::string erroDaChave = tb.CriaIndicePrimario(tabela, false) ? "" : tb.Erro();
    if (!tb.CriaIndiceSecundarios(tabela)) Relata(ctx, tabela, tb.Erro());
    guardados.Devolve();
    const bool pedida = !tb.ColunasDaChave(tabela).empty();
    if (!erroDaChave.empty() && (pedida || !tb.ExisteIndicePrimario(tabela))) Relata(ctx, tabela, erroDaChave);
}

}  // namespace

void AjustaCodReceber(TContexto& ctx, std::span<const TTextoPorTipo> passos) {
    TIndicesGuardados deTcrtlchq = Guarda(ctx, "TCRTLCHQ"), deTchqcanc = Guarda(ctx, "TCHQCANC");
    const auto esquece = [&] {
        deTcrtlchq.Esquece();
        deTchqcanc.Esquece();
    };
    try {
        for (const TTextoPorTipo& passo : passos)
            if (const auto comando = passo.Para(ctx.Banco()); !comando.empty()) ctx.Conexao().ExecuteDirect(comando);
        esquece();
    } catch (...) {
        RefazIndice(ctx);
        Refaz(ctx, "TCRTLCHQ", deTcrtlchq);
        Refaz(ctx, "TCHQCANC", deTchqcanc);
        esquece();
        throw;
    }
}

}  // namespace wkd
