#include "rebuild/CriaBackup.h"

#include <algorithm>
#include <stdexcept>

#include "copy/ColunasDaCopia.h"
#include "copy/Conferencia.h"
#include "copy/CopiaDeLinhas.h"
#include "copy/Rejeitados.h"
#include "rebuild/EstadoDaReconstrucao.h"
#include "rows/WKDQuery.h"
#include "tables/MarcaDaBackup.h"
#include "values/Texto.h"

namespace wkd {

namespace {

TPares Campos(TWKDQuery& q, const std::vector<std::string>& nomes) {
    TPares pares;
    for (const auto& nome : nomes) pares.emplace_back(nome, q.Campo(nome));
    return pares;
}

struct TColunasDaBackup {
    std::vector<std::string> todas, lidas, daChave, sobram;
};

TColunasDaBackup ColunasDaBackup(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chave) {
    TColunasDaBackup colunas;
    const auto daTabela = ctx.Conexao().Colunas(tabela);
    for (const auto& coluna : ctx.Conexao().Colunas(NomeDaBackup(tabela))) {
        colunas.todas.push_back(coluna.nome);
        colunas.lidas.push_back(Lida(coluna, ctx.Dialeto()));
        if (std::ranges::any_of(chave, [&](const auto& nome) { return IgualSemCaixa(nome, coluna.nome); }))
            colunas.daChave.push_back(coluna.nome);
        if (!ColunaDeNome(daTabela, coluna.nome)) colunas.sobram.push_back(coluna.nome);
    }
    return colunas;
}

/// How many rows the query gave.
std::int64_t Guarda(TContexto& ctx, const std::string& tabela, const std::string& sql, std::string_view motivo,
                    const std::vector<std::string>& daChave, const std::vector<std::string>& valores) {
    TRejeitados rejeitados(ctx, tabela, "Backup refeito");
    TWKDQuery q(ctx.Conexao(), sql);
    std::int64_t linhas = 0;
    for (q.Open(); !q.Eof(); q.Next(), ++linhas)
        if (!rejeitados.Linha(Campos(q, daChave), motivo, Campos(q, valores)))
            throw TErroConhecido(TFalha::Arquivo, "o que só " + NomeDaBackup(tabela) +
                                                      " tem não pôde ser guardado: " + Junta(valores, ", "));
    LevaRejeitadosAoDisco(ctx);
    return linhas;
}

}  // namespace

void GuardaSobra(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chave) {
    const auto [todas, lidas, daChave, sobram] = ColunasDaBackup(ctx, tabela, chave);
    if (sobram.empty()) return;
    const std::string backup = NomeDaBackup(tabela);
    std::vector<std::string> comValor;
    for (const auto& nome : sobram) comValor.push_back(ctx.Dialeto().Identificador(nome) + " is not null");
    const auto linhas =
        Guarda(ctx, tabela, "select " + Junta(lidas, ",") + " from " + backup + " where " + Junta(comValor, " or "),
               "a tabela não tem a coluna e o backup é refeito", daChave, daChave.empty() ? todas : sobram);
    const std::string linha = "Tabela " + tabela + ": colunas que só " + backup + " tinha, " +
                              (linhas > 0 ? "valores no arquivo de rejeitados: " : "sem valores: ") +
                              Junta(sobram, ", ");
    ctx.Tela().Erro(TErroDaExecucao::NaLista({.mensagem = linha, .falha = TFalha::LinhaRecusada}, tabela));
}

void GuardaDiferentes(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chave,
                      const std::set<std::string>& alteradas) {
    const auto [todas, lidas, daChave, sobram] = ColunasDaBackup(ctx, tabela, chave);
    for (const auto& sql : ConsultasDasDiferentes(ctx.Conexao(), NomeDaBackup(tabela), tabela, alteradas))
        Guarda(ctx, tabela, sql, "a tabela tem outro registro com a mesma chave", daChave, todas);
}

namespace {

std::int64_t Conta(TContexto& ctx, const std::string& tabela) {
    return ContaRegistros(ctx.Conexao(), "select count(*) as total from " + tabela);
}

/// Whether the backup of an interrupted rebuild serves: the table is gone, or there is nothing in it to be saved.
/// Throws std::runtime_error when rows came in between, which the restore must see.
bool Aproveita(TContexto& ctx, const std::string& tabela, bool conferida) {
    const auto estado = EstadoDaReconstrucao(ctx, tabela);
    if (!conferida && estado == TEstadoDaReconstrucao::Restaurando && ctx.dm.ExisteTabela(tabela) &&
        Conta(ctx, tabela) > 0)
        throw TErroConhecido(TFalha::EmUso, "a tabela recebeu registros durante a execução: rode de novo");
    return estado == TEstadoDaReconstrucao::Restaurando || estado == TEstadoDaReconstrucao::Desconhecida;
}

/// The table is dropped only when its backup is proven to hold all of it.
void ExigeCopiaFiel(TContexto& ctx, const std::string& tabela, const TResultadoDaCopia& copia) {
    const std::string backup = NomeDaBackup(tabela);
    if (const auto faltam = copia.recusadas + copia.incompletas; faltam > 0)
        throw TErroConhecido(TFalha::LinhaRecusada,
                             backup + " não recebeu por inteiro " + std::to_string(faltam) +
                                 " registros, que o arquivo de rejeitados mostra: corrija-os na tabela, ou a coluna em"
                                 " SATRIB, e rode de novo");
    const TConferencia conferencia = ConfereComBackup(ctx.Conexao(), backup, tabela, copia.alteradas);
    if (conferencia.naTabela != copia.lidas)
        throw TErroConhecido(TFalha::EmUso, "os registros mudaram durante a cópia para " + backup);
    if (conferencia.Igual()) return;
    throw TErroConhecido(TFalha::ConteudoDiferente,
                         "a cópia em " + backup + " não confere: " + std::to_string(conferencia.naTabela) +
                             " registros, " + std::to_string(conferencia.naBackup) + " copiados, " +
                             std::to_string(conferencia.diferentes) + " diferentes " + Junta(conferencia.colunas, ","));
}

void Copia(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chave) {
    ctx.Tela().LblAtual("Obtendo quantidade de registros..." + tabela);
    const auto estado = EstadoDaReconstrucao(ctx, tabela);
    if (estado == TEstadoDaReconstrucao::Nenhuma) EsqueceEtapa(ctx, tabela);
    if (ctx.dm.ExisteTabela(NomeDaBackup(tabela))) GuardaSobra(ctx, tabela, chave);
    if (estado == TEstadoDaReconstrucao::Guardando) MarcaGuardada(ctx, tabela);  // also one that TINI alone knows
    const bool criada = ctx.dm.Atualiza.CriaTabela(tabela, true);
    const TErro erro = ctx.dm.Atualiza.Erro();
    ctx.dm.AtualizaListaDeTabelas();
    if (!criada) throw TErroConhecido(erro);

    ctx.Tela().LblAtual("Criando tabela de backup: " + tabela);
    TRenumeracao renumeracao(ctx.dm.SatribNovo);
    TCopiaDeLinhas copia(ctx,
                         {.tabela = tabela,
                          .origem = tabela,
                          .destino = NomeDaBackup(tabela),
                          .chave = chave,
                          .etapa = ctx.acaoAtual,
                          .rotulo = "Transferindo dados para tabela de backup: " + tabela,
                          .exigente = true,
                          .linhasPorLote = ctx.linhasPorCommit.value_or(kLinhasNaIda)},
                         renumeracao);
    ExigeCopiaFiel(ctx, tabela, copia.Executa(Conta(ctx, tabela)));
    MarcaReconstrucao(ctx, tabela);
    ctx.Tela().PbAtual().Posicao(0);
}

}  // namespace

std::vector<std::string> ChaveGuardada(TContexto& ctx, const std::string& tabela) {
    auto chave = ctx.dm.Atualiza.ColunasDaChave(tabela);
    return chave.empty() ? ctx.Conexao().ChavePrimaria(tabela).colunas : chave;
}

TBackupFeito CriaBackup(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chave, bool sempre,
                        bool conferida) {
    ctx.tabelaAtual = tabela;
    ctx.acaoAtual = "Criar Backup";
    const bool aproveitada = !sempre && Aproveita(ctx, tabela, conferida);
    if (aproveitada)
        ReabreReconstrucao(ctx, tabela);
    else
        Copia(ctx, tabela, chave);
    ctx.Tela().LblAtual("Parado.");
    if (aproveitada) return {Conta(ctx, NomeDaBackup(tabela)), {}};
    return {Conta(ctx, tabela), ctx.Conexao().ChavePrimaria(tabela).colunas};
}

}  // namespace wkd
