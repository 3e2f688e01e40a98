#include "CriaBackup.h"

#include <algorithm>
#include <stdexcept>

#include "Conferencia.h"
#include "CopiaDeLinhas.h"
#include "EstadoDaReconstrucao.h"
#include "SobraDaBackup.h"
#include "TBComandos.h"
#include "Texto.h"
#include "WKDQuery.h"

namespace wkd {

namespace {

constexpr std::size_t kLinhasPorLote = 100;

std::int64_t Conta(TContexto& ctx, const std::string& tabela) {
    return ContaRegistros(ctx.Conexao(), "select count(*) as total from " + tabela);
}

/// Whether the backup of an interrupted rebuild serves: the table is gone, or there is nothing in it to be saved.
/// Throws std::runtime_error when rows came in between, which the restore must see.
bool Aproveita(TContexto& ctx, const std::string& tabela, bool conferida) {
    const auto estado = EstadoDaReconstrucao(ctx, tabela);
    if (!conferida && estado == TEstadoDaReconstrucao::Restaurando && ctx.dm.ExisteTabela(tabela) &&
        Conta(ctx, tabela) > 0)
        throw std::runtime_error("a tabela recebeu registros durante a execução: rode de novo");
    return estado == TEstadoDaReconstrucao::Restaurando || estado == TEstadoDaReconstrucao::Desconhecida;
}

/// The table is dropped only when its backup is proven to hold all of it.
void ExigeCopiaFiel(TContexto& ctx, const std::string& tabela, const TResultadoDaCopia& copia) {
    const std::string backup = NomeDaBackup(tabela);
    if (const auto faltam = copia.recusadas + copia.incompletas; faltam > 0)
        throw std::runtime_error(backup + " não recebeu por inteiro " + std::to_string(faltam) +
                                 " registros, que o arquivo de rejeitados mostra: corrija-os na tabela, ou a coluna em"
                                 " SATRIB, e rode de novo");
    const TConferencia conferencia = ConfereComBackup(ctx.Conexao(), backup, tabela, copia.alteradas);
    if (conferencia.naTabela != copia.lidas)
        throw std::runtime_error("os registros mudaram durante a cópia para " + backup);
    if (conferencia.Igual()) return;
    throw std::runtime_error("a cópia em " + backup + " não confere: " + std::to_string(conferencia.naTabela) +
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
    const std::string erro = ctx.dm.Atualiza.Erro();
    ctx.dm.AtualizaListaDeTabelas();
    if (!criada) throw std::runtime_error(erro);

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
                          .linhasPorLote = kLinhasPorLote},
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
