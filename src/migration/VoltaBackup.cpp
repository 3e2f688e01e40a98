#include "VoltaBackup.h"

#include <optional>
#include <stdexcept>

#include "CopiaDeLinhas.h"
#include "EstadoDaReconstrucao.h"
#include "Rejeitados.h"
#include "TBComandos.h"
#include "Texto.h"

namespace wkd {

namespace {

constexpr std::size_t kLinhasPorLote = 11;

/// Columns, in capitals, in which an earlier part of the restore may have changed values on purpose.
std::set<std::string> TalvezAlteradas(TContexto& ctx, const std::string& tabela, const TRenumeracao& renumeracao) {
    std::set<std::string> colunas;
    for (const auto& coluna : ColunasDaCopia(ctx.Conexao(), NomeDaBackup(tabela), tabela, renumeracao)) {
        const bool preenchida = coluna.origem && coluna.destino.requerido && !coluna.origem->requerido;
        if (preenchida || coluna.numerada) colunas.insert(ChaveDeNome(coluna.destino.nome));
    }
    return colunas;
}

}  // namespace

std::set<std::string> VoltaBackup(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chave,
                                  const TRestante& restante) {
    const std::string backup = NomeDaBackup(tabela);
    if (!ctx.dm.ExisteTabela(backup)) {
        ctx.Tela().SetLog("Não existe tabela de backup", tabela, "VOLTAR BACKUP");
        return {};
    }
    ctx.tabelaAtual = tabela;
    ctx.acaoAtual = "Voltar backup";
    ctx.Tela().LblAtual("Restaurando backup da tabela: " + tabela);

    TRenumeracao renumeracao(ctx.dm.SatribNovo);
    if (restante.retomada) renumeracao.Continua(ctx.Conexao(), tabela);
    TCopia copia{.tabela = tabela,
                 .origem = backup,
                 .destino = tabela,
                 .chave = chave,
                 .etapa = ctx.acaoAtual,
                 .inicioDoErro = "Erro ao Voltar backup: ",
                 .linhasPorLote = kLinhasPorLote,
                 .condicao = restante.condicao,
                 .fonte = restante.fonte,
                 .pula = restante.pula};
    std::optional<TContagemDaRestauracao> contagem;
    if (restante.conta) {
        contagem.emplace(ctx, tabela);
        if (!restante.retomada) contagem->Grava(0);
        copia.aoGravar = [&](std::int64_t linhas) { contagem->Grava(linhas); };
    }
    TResultadoDaCopia resultado = TCopiaDeLinhas(ctx, std::move(copia), renumeracao).Executa(restante.linhas);
    LevaRejeitadosAoDisco(ctx);
    if (resultado.soNaOrigem > 0)
        throw std::runtime_error("registros que ainda estão só em " + backup + ": " +
                                 std::to_string(resultado.soNaOrigem));
    if (restante.retomada) resultado.alteradas.merge(TalvezAlteradas(ctx, tabela, renumeracao));
    ctx.Tela().PbAtual().Posicao(0);
    ctx.Tela().LblAtual("Parado.");
    return std::move(resultado.alteradas);
}

}  // namespace wkd
