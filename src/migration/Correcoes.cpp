#include "Correcoes.h"

#include <algorithm>
#include <chrono>

#include "CorrecaoCodReceber.h"
#include "CorrecoesLista.h"
#include "Dialeto.h"
#include "Texto.h"
#include "Tini.h"

namespace wkd {

namespace {

constexpr std::string_view kSecao = "AtualizaQuery";

void Executa(TContexto& ctx, const TCorrecao& correcao) {
    if (!correcao.passos.empty()) return AjustaCodReceber(ctx, correcao.passos);
    const std::string comando(correcao.comando.Para(ctx.Banco()));
    ctx.Conexao().ExecuteDirect(correcao.ajustada ? AjustaQuery(comando, ctx.Banco()) : comando);
}

bool Pendente(TContexto& ctx, const TCorrecao& correcao) {
    return LeParametro(kSecao, correcao.nome, "NAO", &ctx.Conexao()) != "SIM";
}

void AcrescentaPendentes(TContexto& ctx, std::span<const TCorrecao> correcoes,
                         std::vector<std::string_view>& pendentes) {
    for (const TCorrecao& correcao : correcoes)
        if (correcao.ExisteNo(ctx.Banco()) && Pendente(ctx, correcao)) pendentes.push_back(correcao.nome);
}

/// Runs a correction that the database has not seen yet. One that fails is recorded as done, too: it is never tried
/// again. True when it was its turn.
bool ExecutaQuery(TContexto& ctx, const TCorrecao& correcao) {
    const std::string nome(correcao.nome);
    if (!Pendente(ctx, correcao)) return false;
    ctx.Tela().Memo1("Executando Query: " + nome);
    ctx.Tela().ProcessaMensagens();
    std::string erro;
    const auto inicio = std::chrono::steady_clock::now();
    try {
        Executa(ctx, correcao);
    } catch (const std::exception& e) {
        erro = "Erro rodando a query: " + nome + " | Erro: " + e.what();
    }
    ctx.evidencia.correcoes.push_back(
        {nome, std::chrono::duration<double>(std::chrono::steady_clock::now() - inicio).count(), erro});
    GravaParametro(kSecao, nome, "SIM", &ctx.Conexao());
    if (!erro.empty()) ctx.Tela().Memo1(erro);
    return true;
}

/// Corrections create and alter columns: what is cached of them is read anew.
void Executa(TContexto& ctx, std::span<const TCorrecao> correcoes) {
    bool executou = false;
    for (const TCorrecao& correcao : correcoes)
        if (correcao.ExisteNo(ctx.Banco()) && ExecutaQuery(ctx, correcao)) executou = true;
    if (executou) ctx.dm.AtualizaListaDeTabelas();
}

}  // namespace

std::vector<std::string_view> CorrecoesPendentes(TContexto& ctx) {
    const bool posteriores = ctx.opcoes.querysPosteriores;
    const bool anteriores = ctx.opcoes.querysAnteriores && (ctx.estado.usuariosOnline || posteriores);
    std::vector<std::string_view> pendentes;
    if (anteriores) AcrescentaPendentes(ctx, CorrecoesAnteriores(), pendentes);
    if (posteriores) AcrescentaPendentes(ctx, CorrecoesPosteriores(), pendentes);
    return pendentes;
}

bool CorrecaoMexeAntes(TContexto& ctx, std::string_view tabela) {
    if (!ctx.opcoes.querysAnteriores || !ctx.estado.usuariosOnline) return false;
    const std::string nome = Maiusculas(tabela);
    return std::ranges::any_of(CorrecoesAnteriores(), [&](const TCorrecao& correcao) {
        return correcao.ExisteNo(ctx.Banco()) &&
               Maiusculas(correcao.comando.Para(ctx.Banco())).find(nome) != std::string::npos &&
               Pendente(ctx, correcao);
    });
}

void QuerysAnteriores(TContexto& ctx) {
    if (ctx.opcoes.querysAnteriores) Executa(ctx, CorrecoesAnteriores());
}

void QuerysPosteriores(TContexto& ctx) {
    if (!ctx.opcoes.querysPosteriores) return;
    if (!ctx.estado.usuariosOnline) QuerysAnteriores(ctx);
    Executa(ctx, CorrecoesPosteriores());
}

}  // namespace wkd
