#include "CorrecaoCodReceber.h"

#include <algorithm>

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

void RefazChaveEIndices(TContexto& ctx, const std::string& tabela) {
    if (!ctx.dm.ExisteTabela(tabela)) return;
    TTB& tb = ctx.dm.Atualiza;
    for (const auto& operacao : {+[](TTB&t, const std::string&nome) { return t.CriaIndicePrimario(nome, false); },
                                 +[](TTB&t, const std::string&nome) { return t.CriaIndiceSecundarios(nome); }}) {
        if (operacao(tb, tabela)) continue;
        ctx.Tela().Memo2("Tabela: " + tabela + " - " + tb.Erro());
        ctx.Tela().SetLog(tb.Erro(), tabela, "AjustaCodReceber");
    }
}

}  // namespace

void AjustaCodReceber(TContexto& ctx, std::span<const TTextoPorTipo> passos) {
    try {
        for (const TTextoPorTipo& passo : passos)
            if (const auto comando = passo.Para(ctx.Banco()); !comando.empty()) ctx.Conexao().ExecuteDirect(comando);
    } catch (...) {
        RefazChaveEIndices(ctx, "TCRTLCHQ");
        RefazChaveEIndices(ctx, "TCHQCANC");
        RefazIndice(ctx);
        throw;
    }
}

}  // namespace wkd
