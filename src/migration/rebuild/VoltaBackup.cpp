#include "rebuild/VoltaBackup.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <vector>

#include "copy/CopiaDeLinhas.h"
#include "copy/Rejeitados.h"
#include "rebuild/EstadoDaReconstrucao.h"
#include "rows/WKDQuery.h"
#include "tables/MarcaDaBackup.h"
#include "values/Texto.h"

namespace wkd {

namespace {

std::int64_t Conta(TContexto& ctx, const std::string& tabela) {
    return ContaRegistros(ctx.Conexao(), "select count(*) as total from " + tabela);
}

/// Whether a key value comes back as it is: neither converted, nor filled in where it is missing.
bool MesmaChave(const TColunaFisica* daBackup, const TColunaFisica* daTabela) {
    return daBackup && daTabela && daBackup->tipo == daTabela->tipo && daBackup->conjunto == daTabela->conjunto &&
           daBackup->requerido;
}

/// Alias and where clause of the backup's rows whose key the table lacks; empty when the key cannot tell.
std::string CondicaoPelaChave(TContexto& ctx, const std::string& tabela) {
    const auto daBackup = ctx.Conexao().Colunas(NomeDaBackup(tabela));
    const auto daTabela = ctx.Conexao().Colunas(tabela);
    std::vector<std::string> iguais;
    for (const auto& coluna : ctx.Conexao().ChavePrimaria(tabela).colunas) {
        const TColunaFisica* daChave = ColunaDeNome(daBackup, coluna);
        if (!MesmaChave(daChave, ColunaDeNome(daTabela, coluna))) return "";
        iguais.push_back("t." + ctx.Dialeto().Identificador(coluna) + " = b." +
                         ctx.Dialeto().Identificador(daChave->nome));
    }
    if (iguais.empty()) return "";
    return " b where not exists (select 1 from " + tabela + " t where " + Junta(iguais, " and ") + ")";
}

/// Whether rows of the backup share a key of the table, which takes one of them alone: its key then does not tell
/// that the others are not back.
bool RepeteChave(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chaveAntiga) {
    std::vector<std::string> chave = ctx.Conexao().ChavePrimaria(tabela).colunas;
    const auto naChave = [&](const std::string& antiga) {
        return std::ranges::any_of(chave, [&](const std::string& coluna) { return IgualSemCaixa(coluna, antiga); });
    };
    if (!chaveAntiga.empty() && std::ranges::all_of(chaveAntiga, naChave)) return false;
    for (auto& coluna : chave) coluna = ctx.Dialeto().Identificador(coluna);
    const std::string grupos = Junta(chave, ", ");
    return ContaRegistros(ctx.Conexao(), "select count(*) as total from (select " + grupos + " from " +
                                             NomeDaBackup(tabela) + " group by " + grupos +
                                             " having count(*) > 1) repetidas") > 0;
}

/// The columns of both tables by which their rows are compared: select lists of one length, and the names in them.
struct TComparadas {
    std::vector<std::string> daBackup, daTabela, nomes;

    void Junta(const std::string& b, const std::string& t) {
        nomes.push_back("WKD_K" + std::to_string(nomes.size()));
        daBackup.push_back(b + " as " + nomes.back());
        daTabela.push_back(t);
    }
};

TComparadas Comparadas(TContexto& ctx, const std::string& tabela) {
    const auto daTabela = ctx.Conexao().Colunas(tabela);
    TComparadas comparadas;
    for (const TColunaFisica& b : ctx.Conexao().Colunas(NomeDaBackup(tabela))) {
        const TColunaFisica* t = ColunaDeNome(daTabela, b.nome);
        if (!t || !t->expressao.empty()) continue;
        const std::string doB = ctx.Dialeto().Agrupavel(b), doT = ctx.Dialeto().Agrupavel(*t);
        comparadas.Junta(b.tipo == t->tipo ? doB : "cast(" + doB + " as " + t->tipoSql + ")", doT);
        if (b.tipo == TTipoDado::Texto && t->tipo == b.tipo)  // blanks at the end count
            comparadas.Junta(ctx.Dialeto().Bytes(doB), ctx.Dialeto().Bytes(doT));
    }
    return comparadas;
}

/// The rows that stand more often in the backup than in the table, as often as the table lacks them. Both tables go
/// into one list with a number for each repetition; what stands there once, and comes from the backup, is missing.
std::string LinhasAMais(TContexto& ctx, const std::string& tabela) {
    std::vector<std::string> nomes, nulos;
    for (const TColunaFisica& coluna : ctx.Conexao().Colunas(NomeDaBackup(tabela))) {
        nomes.push_back(ctx.Dialeto().Identificador(coluna.nome));
        nulos.emplace_back("null");
    }
    const TComparadas comparadas = Comparadas(ctx, tabela);
    const std::string lista = Junta(nomes, ", "), iguais = Junta(comparadas.nomes, ", ");
    return "(select " + lista + " from (select r.*, count(*) over (partition by " + iguais +
           ", WKD_N) as WKD_VEZES from (select u.*, row_number() over (partition by WKD_LADO, " + iguais +
           " order by WKD_LADO) as WKD_N from (select " + lista + ", " + Junta(comparadas.daBackup, ", ") +
           ", 0 as WKD_LADO from " + NomeDaBackup(tabela) + " union all select " + Junta(nulos, ", ") + ", " +
           Junta(comparadas.daTabela, ", ") + ", 1 from " + tabela +
           ") u) r) v where WKD_LADO = 0 and WKD_VEZES = 1) w";
}

}  // namespace

TRestante RestauracaoInteira(TContexto& ctx, const std::string& tabela, const std::vector<std::string>& chaveAntiga) {
    TRestante restante;
    restante.conta = CondicaoPelaChave(ctx, tabela).empty() || RepeteChave(ctx, tabela, chaveAntiga);
    restante.linhas = Conta(ctx, NomeDaBackup(tabela));
    return restante;
}

bool RestauracaoInterrompida(TContexto& ctx, const std::string& tabela) {
    if (!ctx.dm.ExisteTabela(tabela) || !ctx.dm.ExisteTabela(NomeDaBackup(tabela))) return false;
    const auto estado = EstadoDaReconstrucao(ctx, tabela);
    const bool aberta = estado == TEstadoDaReconstrucao::Restaurando || estado == TEstadoDaReconstrucao::Desconhecida;
    return aberta && Conta(ctx, tabela) > 0;
}

/// A count of what is back is the surest. Without one, rows are told apart by the key, else as a whole.
TRestante RestauracaoQueFalta(TContexto& ctx, const std::string& tabela) {
    const std::string backup = NomeDaBackup(tabela);
    TRestante restante;
    restante.retomada = true;
    const auto feitas = LinhasRestauradas(ctx, tabela);
    if (!feitas) restante.condicao = CondicaoPelaChave(ctx, tabela);
    if (!feitas && restante.condicao.empty()) restante.fonte = LinhasAMais(ctx, tabela);
    restante.conta = feitas.has_value();
    restante.pula = feitas.value_or(0);
    const std::string origem = restante.fonte.empty() ? backup + restante.condicao : restante.fonte;
    restante.linhas = std::max<std::int64_t>(Conta(ctx, origem) - restante.pula, 0);
    return restante;
}

namespace {

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
        ctx.Tela().Erro(TErroDaExecucao::NoLog(
            {.mensagem = "Não existe tabela de backup", .falha = TFalha::ObjetoInexistente}, tabela, "VOLTAR BACKUP"));
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
                 .linhasPorLote = ctx.linhasPorCommit.value_or(kLinhasNaVolta),
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
        throw TErroConhecido(TFalha::Arquivo,
                             "registros que ainda estão só em " + backup + ": " + std::to_string(resultado.soNaOrigem));
    if (restante.retomada) resultado.alteradas.merge(TalvezAlteradas(ctx, tabela, renumeracao));
    ctx.Tela().PbAtual().Posicao(0);
    ctx.Tela().LblAtual("Parado.");
    return std::move(resultado.alteradas);
}

}  // namespace wkd
