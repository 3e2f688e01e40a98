#include "CorrecaoCodReceber.h"

#include <algorithm>

#include "Texto.h"
#include "Tolera.h"

namespace wkd {

namespace {

constexpr std::string_view kIndice = "TCRTLCHQ_CODIGO";

bool TemIndice(TConnection& conexao) {
    return std::ranges::any_of(conexao.Indices("TCRTLCHQ"),
                               [](const TIndice& indice) { return IgualSemCaixa(indice.nome, kIndice); });
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
    const bool tinhaIndice = TemIndice(ctx.Conexao());
    try {
        for (const TTextoPorTipo& passo : passos)
            if (const auto comando = passo.Para(ctx.Banco()); !comando.empty()) ctx.Conexao().ExecuteDirect(comando);
    } catch (...) {
        RefazChaveEIndices(ctx, "TCRTLCHQ");
        RefazChaveEIndices(ctx, "TCHQCANC");
        if (tinhaIndice && !TemIndice(ctx.Conexao())) {
            // the dictionary does not know this index
            Tolera([&] {
                ctx.Conexao().ExecuteDirect(
                    "create INDEX TCRTLCHQ_CODIGO on TCRTLCHQ (COD_EMPRESA, COD_RELACIONA, TIPO)");
            });
        }
        throw;
    }
}

}  // namespace wkd
