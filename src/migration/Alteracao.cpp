#include "Alteracao.h"

#include <algorithm>

#include "DicionarioDaTabela.h"

namespace wkd {

namespace {

void ExecutaComando(TContexto& ctx, std::string_view tabela, const TComandoPendente& comando) {
    ctx.Tela().Memo1(comando.texto);
    if (const TResultado resultado = ExecutaPendente(ctx, tabela, comando); !resultado) {
        ctx.repeteTabela = true;
        ctx.Tela().Memo2(resultado.Mensagem());
        ctx.Tela().SetLog(resultado.Mensagem() + " Query: " + comando.texto, ctx.dm.SArquivoNovo.Texto("nome_arquivo"),
                          "Query de alteração de campo");
    }
    ctx.dm.Commit(comando.texto);
}

/// The server alters no column of a primary key: the key goes first and is made again behind the statements.
void LiberaChave(TContexto& ctx, std::string_view tabela, const TPendentes& pendentes, TIndicesGuardados& guardados) {
    TTB& tb = ctx.dm.Atualiza;
    const bool muda = std::any_of(pendentes.begin(), pendentes.end(), [](const auto& c) { return c.mudaChave; });
    if (!(muda || guardados.ChavePendente()) || !tb.ExisteIndicePrimario(tabela)) return;
    guardados.GuardaChave(tb.ColunasDaChave(tabela));
    tb.ApagaInidices(tabela, true);
}

void ExecutaTodos(TContexto& ctx, std::string_view tabela, TPendentes& pendentes, TIndicesGuardados& guardados) {
    try {
        LiberaChave(ctx, tabela, pendentes, guardados);
        while (!pendentes.empty()) {
            const TComandoPendente comando = std::move(pendentes.front());
            pendentes.erase(pendentes.begin());
            ExecutaComando(ctx, tabela, comando);
        }
    } catch (const TErroBanco& erro) {
        ctx.repeteTabela = true;
        ctx.Tela().Memo1("Erro atualizando o arquivo :" + std::string(tabela));
        ctx.Tela().SetLog(erro.what(), tabela, "Erro atualizando o arquivo");
    }
}

void RelataIndice(TContexto& ctx, const std::string& linha, std::string_view tabela, std::string_view acao) {
    ctx.Tela().Memo1(linha);
    ctx.Tela().SetLog(ctx.dm.Atualiza.Erro(), tabela, acao);
}

void CriaIndices(TContexto& ctx, std::string_view tabela) {
    TTB& tb = ctx.dm.Atualiza;
    const std::string nome(tabela);
    if (!tb.CriaIndicePrimario(nome, false)) {
        RelataIndice(ctx, "Erro criando indice primario do arquivo :" + nome, nome,
                     "Erro criando indice primario do arquivo");
        ctx.repeteTabela = ctx.repeteTabela || !tb.ColunasDaChave(nome).empty();  // none was told
    }
    if (!tb.CriaIndiceSecundarios(nome)) {
        RelataIndice(ctx, "Erro criando indice secundario do arquivo:" + nome + " " + tb.Erro(), nome,
                     "Erro criando indice secundario do arquivo:");
        ctx.repeteTabela = true;
    }
}

}  // namespace

void Alterar(TContexto& ctx, std::string_view tabela, TPendentes& pendentes, TIndicesGuardados& guardados) {
    ctx.tabelaAtual = tabela;
    ctx.acaoAtual = "Alterar";
    try {
        RegravaDicionario(ctx, tabela, false);
    } catch (const TErroBanco& erro) {
        if (!erro.ConexaoPerdida()) CriaIndices(ctx, tabela);  // the run has dropped them
        throw;
    }
    ExecutaTodos(ctx, tabela, pendentes, guardados);
    CriaIndices(ctx, tabela);
}

}  // namespace wkd
