#include "passes/CamposPersonalizados.h"

#include <vector>

#include "alter/IndicesGuardados.h"
#include "datamodule/Mescla.h"
#include "rows/WKDQuery.h"
#include "values/Texto.h"

namespace wkd {

namespace {

/// Rows of one table that belong to one plug-in.
struct TDono {
    std::string tabela, plugin;

    std::string DaTabela() const { return Aspas(tabela); }
    std::string DoPlugin() const { return " and cod_plugin = " + Aspas(plugin); }
    /// Rows without plug-in code belong to the empty one.
    std::string DoPluginOuNenhum() const { return " and coalesce(cod_plugin, '') = " + Aspas(plugin); }
};

std::vector<TDono> Donos(TConnection& conexao) {
    std::vector<TDono> donos;
    TWKDQuery q(conexao, "select arquivo,cod_plugin from satrib_user group by arquivo,cod_plugin");
    for (q.Open(); !q.Eof(); q.Next()) donos.push_back({q.Texto("arquivo"), q.Texto("cod_plugin")});
    return donos;
}

void Executa(TContexto& ctx, const std::string& sql) { TWKDQuery(ctx.Conexao(), sql).ExecSQL(); }

/// Beginning of a search's name, followed by `coringa`; `barra` stands before each "_" where it is a wildcard.
std::string Pesquisas(const TDono& dono, std::string_view barra, std::string_view coringa) {
    const std::string b(barra);
    return Aspas(Maiusculas(dono.tabela + b + "_P" + b + "_U" + b + "_" + std::string(coringa)));
}

void ApagaColunas(TContexto& ctx, const TDono& dono) {
    switch (ctx.Banco()) {
        case TTipoBanco::tbInterbase:
            Executa(ctx,
                    "DELETE FROM SATRIB WHERE NOME STARTING 'U_'  AND ARQUIVO = " + dono.DaTabela() + dono.DoPlugin());
            Executa(ctx, "delete from SLOOKUP where SLOOKUP.arquivo = " + dono.DaTabela() + " AND CAMPO STARTING 'U_'" +
                             dono.DoPlugin());
            break;
        case TTipoBanco::tbSQLServer:
            Executa(ctx, "DELETE FROM SATRIB WHERE NOME LIKE 'U\\_%' {ESCAPE '\\'} AND ARQUIVO = " + dono.DaTabela() +
                             dono.DoPlugin());
            Executa(ctx, "delete from SLOOKUP where SLOOKUP.arquivo = " + dono.DaTabela() +
                             " AND CAMPO LIKE 'U\\_%' {ESCAPE '\\'}" + dono.DoPlugin());
            break;
        case TTipoBanco::tbOracle:
            ctx.Tela().Informacao("Implementar para oracle");
            break;
        default:
            break;
    }
}

void ApagaPesquisas(TContexto& ctx, const TDono& dono) {
    switch (ctx.Banco()) {
        case TTipoBanco::tbInterbase:
            Executa(ctx, "DELETE FROM SPESQ WHERE NOMEPESQUISA STARTING  " + Pesquisas(dono, "", "") +
                             " AND ARQUIVO = " + dono.DaTabela() + dono.DoPlugin());
            Executa(ctx, "DELETE FROM SPESQAUX WHERE NOME STARTING " + Pesquisas(dono, "", "") +
                             " AND ARQUIVO = " + dono.DaTabela() + dono.DoPlugin());
            break;
        case TTipoBanco::tbSQLServer:
            Executa(ctx, "DELETE FROM SPESQ WHERE NOMEPESQUISA LIKE  " + Pesquisas(dono, "\\", "%") +
                             "  {ESCAPE '\\'}  AND ARQUIVO = " + dono.DaTabela() + dono.DoPlugin());
            Executa(ctx, "DELETE FROM SPESQAUX WHERE NOME LIKE " + Pesquisas(dono, "\\", "%") +
                             "    {ESCAPE '\\'}  AND ARQUIVO = " + dono.DaTabela() + dono.DoPlugin());
            break;
        case TTipoBanco::tbOracle:
            ctx.Tela().Informacao("Implementar para oracle");
            break;
        default:
            break;
    }
}

/// Copies the customer rows that the destination does not have yet.
void Copia(TContexto& ctx, std::string_view destino, std::string_view de, const std::string& condicao) {
    Executa(ctx, ComandoDeMescla(ctx.dm, {destino, de, condicao}));
}

/// Deletes and copies of the dictionary rows are one transaction: a refused copy leaves the old rows.
void InstalaColunas(TContexto& ctx, const TDono& dono) {
    TTransacao transacao(ctx.Conexao());
    ApagaColunas(ctx, dono);
    Copia(ctx, "SLOOKUP", "FROM SLOOKUP_USER", "SLOOKUP_USER.arquivo = " + dono.DaTabela() + dono.DoPluginOuNenhum());
    Copia(ctx, "SATRIB", "from satrib_user", "satrib_user.arquivo = " + dono.DaTabela() + dono.DoPluginOuNenhum());
    transacao.Commit();
}

void Relata(TContexto& ctx, const std::string& tabela, bool feito) {
    if (feito) return;
    const TErro& erro = ctx.dm.Atualiza.Erro();
    ctx.Tela().Erro(TErroDaExecucao::NosDois(erro, tabela, "Campos personalizados",
                                             "Campos personalizados: Tabela " + tabela + " - " + erro.mensagem));
}

/// Makes the physical table match its dictionary rows; what cannot be done is reported and the next step follows.
void InstalaTabela(TContexto& ctx, const std::string& tabela, bool recria) {
    TTB& tb = ctx.dm.Atualiza;
    TIndicesGuardados guardados(ctx, tabela, recria);
    if (recria) {
        guardados.GuardaChave(tb.ColunasDaChave(tabela));
        tb.ApagaInidices(tabela, true);
        Relata(ctx, tabela, tb.ReCriaTabela(tabela));
    } else if (tb.ExisteTabela(tabela)) {
        Relata(ctx, tabela, tb.AtualizaTabela(tabela));
    } else {
        Relata(ctx, tabela, tb.CriaTabela(tabela, false));
        ctx.dm.AtualizaListaDeTabelas();
    }
    ctx.dm.EsqueceColunas(tabela);
    // A plug-in may make a table without key.
    Relata(ctx, tabela, tb.CriaIndicePrimario(tabela, false) || tb.ColunasDaChave(tabela).empty());
    Relata(ctx, tabela, tb.CriaIndiceSecundarios(tabela));
    guardados.Devolve();
    if (recria && tb.ExisteTabela(tabela)) guardados.Esquece();
}

}  // namespace

void ApagaCamposPlugin(TContexto& ctx, std::string_view tabela, std::string_view plugin, bool pesquisas, bool campos) {
    const TDono dono{std::string(tabela), std::string(plugin)};
    if (campos) ApagaColunas(ctx, dono);
    if (pesquisas) ApagaPesquisas(ctx, dono);
}

void InstalaPesquisasPlugin(TContexto& ctx, std::string_view tabela, std::string_view plugin) {
    const TDono dono{std::string(tabela), std::string(plugin)};
    TTransacao transacao(ctx.Conexao());
    ApagaPesquisas(ctx, dono);
    Copia(ctx, "SPESQ", "from SPESQ_user", "SPESQ_user.arquivo = " + dono.DaTabela() + dono.DoPlugin());
    Copia(ctx, "SPESQAUX", "from SPESQAUX_user", "SPESQAUX_user.arquivo = " + dono.DaTabela() + dono.DoPlugin());
    transacao.Commit();
}

void InstalaCamposPlugin(TContexto& ctx, std::string_view tabela, bool recria, std::string_view plugin) {
    if (!ctx.dm.Atualiza.Dicionario().Aceita(tabela, "tabela", tabela)) return;
    InstalaColunas(ctx, {std::string(tabela), std::string(plugin)});
    InstalaTabela(ctx, std::string(tabela), recria);
    InstalaPesquisasPlugin(ctx, tabela, plugin);
}

void AtualizaCamposPersonalizados(TContexto& ctx) {
    ctx.Tela().LblAtual("Atualizando Campos Personalizados...");
    for (const TDono& dono : Donos(ctx.Conexao())) InstalaCamposPlugin(ctx, dono.tabela, false, dono.plugin);
}

}  // namespace wkd
