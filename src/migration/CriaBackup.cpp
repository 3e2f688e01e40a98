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
bool Aproveita(TContexto& ctx, const std::string& tabela) {
    const auto estado = EstadoDaReconstrucao(ctx, tabela);
    return estado == TEstadoDaReconstrucao::Restaurando || estado == TEstadoDaReconstrucao::Desconhecida;
}

/// Whether the backup differs from the table in what the copy has rejected, and in nothing else. Without a key to pair
/// the rows, the sums of their columns say nothing as soon as something is rejected.
bool DifereNosRejeitados(const TConferencia& conferencia, const TResultadoDaCopia& copia) {
    if (conferencia.naBackup != copia.gravadas || copia.lidas - copia.gravadas != copia.recusadas) return false;
    const bool rejeitou = copia.recusadas > 0 || copia.incompletas > 0;
    return conferencia.diferentes <= copia.incompletas && (rejeitou || conferencia.colunas.empty());
}

/// The table is dropped only when its backup is proven, or what it lacks is in the rejects file.
void ExigeCopiaFiel(TContexto& ctx, const std::string& tabela, const TResultadoDaCopia& copia) {
    const std::string backup = NomeDaBackup(tabela);
    const TConferencia conferencia = ConfereComBackup(ctx.Conexao(), backup, tabela, copia.alteradas);
    if (conferencia.naTabela != copia.lidas)
        throw std::runtime_error("os registros mudaram durante a cópia para " + backup);
    if (conferencia.Igual() || DifereNosRejeitados(conferencia, copia)) return;
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

TBackupFeito CriaBackup(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chave, bool sempre) {
    ctx.tabelaAtual = tabela;
    ctx.acaoAtual = "Criar Backup";
    const bool aproveitada = !sempre && Aproveita(ctx, tabela);
    if (aproveitada)
        ReabreReconstrucao(ctx, tabela);
    else
        Copia(ctx, tabela, chave);
    ctx.Tela().LblAtual("Parado.");
    if (aproveitada) return {Conta(ctx, NomeDaBackup(tabela)), {}};
    return {Conta(ctx, tabela), ctx.Conexao().ChavePrimaria(tabela).colunas};
}

}  // namespace wkd
