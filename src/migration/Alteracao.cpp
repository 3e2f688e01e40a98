#include "Alteracao.h"

#include <algorithm>

#include "DicionarioDaTabela.h"

namespace wkd {

namespace {

void ExecutaComando(TContexto& ctx, std::string_view tabela, const TComandoPendente& comando) {
    ctx.Tela().Memo1(comando.texto);
    if (const TResultado resultado = ExecutaPendente(ctx, tabela, comando); !resultado) {
        ctx.Tela().Memo2(resultado.Mensagem());
        ctx.Tela().SetLog(resultado.Mensagem() + " Query: " + comando.texto, ctx.dm.SArquivoNovo.Texto("nome_arquivo"),
                          "Query de alteração de campo");
    }
    ctx.dm.Commit(comando.texto);
}

/// The server alters no column of a primary key: the key goes first and is made again behind the statements.
void LiberaChave(TContexto& ctx, std::string_view tabela, const TPendentes& pendentes) {
    const bool muda = std::any_of(pendentes.begin(), pendentes.end(), [](const auto& c) { return c.mudaChave; });
    if (muda && ctx.dm.Atualiza.ExisteIndicePrimario(tabela)) ctx.dm.Atualiza.ApagaInidices(tabela, true);
}

void ExecutaTodos(TContexto& ctx, std::string_view tabela, TPendentes& pendentes) {
    try {
        LiberaChave(ctx, tabela, pendentes);
        while (!pendentes.empty()) {
            const TComandoPendente comando = std::move(pendentes.front());
            pendentes.erase(pendentes.begin());
            ExecutaComando(ctx, tabela, comando);
        }
    } catch (const std::exception& erro) {
        ctx.Tela().Memo1("Erro atualizando o arquivo :" + std::string(tabela));
        ctx.Tela().SetLog(erro.what(), tabela, "Erro atualizando o arquivo");
    }
}

void CriaIndices(TContexto& ctx, std::string_view tabela) {
    TTB& tb = ctx.dm.Atualiza;
    if (!tb.CriaIndicePrimario(tabela, false)) {
        ctx.Tela().Memo1("Erro criando indice primario do arquivo :" + std::string(tabela));
        ctx.Tela().SetLog(tb.Erro(), tabela, "Erro criando indice primario do arquivo");
    }
    if (!tb.CriaIndiceSecundarios(tabela)) {
        ctx.Tela().Memo1("Erro criando indice secundario do arquivo:" + std::string(tabela) + " " + tb.Erro());
        ctx.Tela().SetLog(tb.Erro(), tabela, "Erro criando indice secundario do arquivo:");
    }
}

}  // namespace

void Alterar(TContexto& ctx, std::string_view tabela, TPendentes& pendentes) {
    ctx.tabelaAtual = tabela;
    ctx.acaoAtual = "Alterar";
    RegravaDicionario(ctx, tabela, false);
    ExecutaTodos(ctx, tabela, pendentes);
    CriaIndices(ctx, tabela);
}

}  // namespace wkd
