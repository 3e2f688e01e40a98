#include "alter/Alteracao.h"

#include <algorithm>
#include <vector>

#include "alter/DicionarioDaTabela.h"
#include "alter/ObjetosDaTabela.h"
#include "rows/WKDQuery.h"
#include "tables/MarcaDaBackup.h"
#include "values/Texto.h"

namespace wkd {

namespace {

/// Whether the server did not take the words; types that do not go together are among them.
bool Recusado(const TErroBanco& erro) {
    return erro.Falha() == TFalha::Sintaxe || erro.Falha() == TFalha::Conversao || erro.Falha() == TFalha::Dependencia;
}

}  // namespace

TResultado ExecutaPendente(TContexto& ctx, std::string_view tabela, const TComandoPendente& comando) {
    std::string executado;
    TResultado resultado = ExecutaNaColuna(ctx, tabela, comando.coluna, comando.texto);
    if (!resultado && Recusado(resultado.Erro()) && !comando.alternativa.empty())
        resultado = ExecutaNaColuna(ctx, tabela, comando.coluna, executado = comando.alternativa);
    ctx.dm.EsqueceColunas(tabela);
    ctx.evidencia.Comando({comando.texto, executado, resultado.Mensagem()});
    return resultado;
}

namespace {

void DesviaIndices(TContexto& ctx, const std::string& tabela, std::string_view coluna, TContorno& contorno) {
    auto indices = ctx.Conexao().Indices(tabela);
    std::erase_if(indices, [](const TIndice& indice) { return !indice.restricao.empty(); });
    const auto comoEram = IndicesComoEram(ctx, tabela, indices);
    const std::string noFiltro = "[" + Maiusculas(coluna) + "]";
    for (std::size_t i = 0; i < indices.size(); ++i) {
        const auto& [comando, colunas] = comoEram[i];
        const bool nela = Maiusculas(comando).find(noFiltro) != std::string::npos ||
                          std::ranges::any_of(colunas, [&](const auto& nome) { return IgualSemCaixa(nome, coluna); });
        if (!nela) continue;
        contorno.tira.push_back(ctx.Dialeto().ApagaIndice(indices[i], tabela));
        contorno.devolve.push_back(comando);
    }
}

TContorno Desvio(TContexto& ctx, const std::string& tabela, std::string_view coluna) {
    TContorno contorno = ctx.Dialeto().Padrao(ctx.Conexao(), tabela, coluna);
    DesviaIndices(ctx, tabela, coluna, contorno);
    return contorno;
}

}  // namespace

TResultado ExecutaNaColuna(TContexto& ctx, std::string_view tabela, std::string_view coluna, const std::string& sql,
                           const std::function<void()>& antes) {
    const std::string nome(tabela);
    TConnection& conexao = ctx.Conexao();
    const auto executa = [&](const TContorno& contorno) {
        TTransacao transacao(conexao, antes ? conexao.Reserva(nome) : nullptr);
        for (const auto& comando : contorno.tira) conexao.Prepara(comando)->Executa();
        if (antes) antes();
        conexao.Prepara(sql)->Executa();
        if (!contorno.devolve.empty() && ColunaDeNome(conexao.Colunas(nome), coluna))
            for (const auto& comando : contorno.devolve) conexao.Prepara(comando)->Executa();
        transacao.Commit();
    };
    const auto tenta = [](const auto& passo) {
        try {
            passo();
            return TResultado();
        } catch (const TErroBanco& erro) {
            return TResultado(erro);
        }
    };
    const TResultado resultado = antes ? tenta([&] { executa({}); }) : ctx.dm.Executa(sql);
    if (resultado || coluna.empty() || !ctx.Dialeto().ColunaPresa(resultado.Erro())) return resultado;
    return tenta([&] { executa(Desvio(ctx, nome, coluna)); });
}

namespace {

void ExecutaComando(TContexto& ctx, std::string_view tabela, const TComandoPendente& comando) {
    ctx.Tela().Memo1(comando.texto);
    if (const TResultado resultado = ExecutaPendente(ctx, tabela, comando); !resultado) {
        ctx.repeteTabela = true;
        ctx.Tela().Erro(TErroDaExecucao::NosDois(resultado.Erro().Dados(), ctx.dm.SArquivoNovo.Texto("nome_arquivo"),
                                                 "Query de alteração de campo")
                            .ComComando(comando.texto));
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
        ctx.Tela().Erro(TErroDaExecucao::NoLog(erro.Dados(), tabela, "Erro atualizando o arquivo"));
    }
}

void RelataIndice(TContexto& ctx, const std::string& linha, std::string_view tabela, std::string_view acao) {
    ctx.Tela().Memo1(linha);
    ctx.Tela().Erro(TErroDaExecucao::NoLog(ctx.dm.Atualiza.Erro(), tabela, acao));
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
        RelataIndice(ctx, "Erro criando indice secundario do arquivo:" + nome + " " + tb.Erro().mensagem, nome,
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
