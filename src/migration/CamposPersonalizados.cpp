#include "CamposPersonalizados.h"

#include <vector>

#include "Texto.h"
#include "WKDQuery.h"

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

/// Deletes and inserts of the dictionary rows are one transaction: a refused insert leaves the old rows.
void InstalaColunas(TContexto& ctx, const TDono& dono) {
    TTransacao transacao(ctx.Conexao());
    ApagaColunas(ctx, dono);
    Executa(ctx, "INSERT INTO SLOOKUP SELECT * FROM SLOOKUP_USER where SLOOKUP_USER.arquivo = " + dono.DaTabela() +
                     dono.DoPluginOuNenhum());
    Executa(ctx, "INSERT INTO SATRIB SELECT * from satrib_user where satrib_user.arquivo = " + dono.DaTabela() +
                     dono.DoPluginOuNenhum());
    transacao.Commit();
}

void Relata(TContexto& ctx, const std::string& tabela, bool feito) {
    if (feito) return;
    const std::string& erro = ctx.dm.Atualiza.Erro();
    ctx.Tela().Memo2("Campos personalizados: Tabela " + tabela + " - " + erro);
    ctx.Tela().SetLog(erro, tabela, "Campos personalizados");
}

/// Makes the physical table match its dictionary rows; what cannot be done is reported and the next step follows.
void InstalaTabela(TContexto& ctx, const std::string& tabela, bool recria) {
    TTB& tb = ctx.dm.Atualiza;
    if (recria) {
        tb.ApagaInidices(tabela, true);
        Relata(ctx, tabela, tb.ReCriaTabela(tabela));
    } else if (tb.ExisteTabela(tabela)) {
        Relata(ctx, tabela, tb.AtualizaTabela(tabela));
    } else {
        Relata(ctx, tabela, tb.CriaTabela(tabela, false));
        ctx.dm.AtualizaListaDeTabelas();
    }
    ctx.dm.EsqueceColunas(tabela);
    Relata(ctx, tabela, tb.CriaIndicePrimario(tabela, false));
    Relata(ctx, tabela, tb.CriaIndiceSecundarios(tabela));
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
    Executa(ctx, "INSERT INTO SPESQ SELECT * from SPESQ_user where SPESQ_user.arquivo = " + dono.DaTabela() +
                     dono.DoPlugin());
    Executa(ctx, "INSERT INTO SPESQAUX SELECT * from SPESQAUX_user where SPESQAUX_user.arquivo = " + dono.DaTabela() +
                     dono.DoPlugin());
    transacao.Commit();
}

void InstalaCamposPlugin(TContexto& ctx, std::string_view tabela, bool recria, std::string_view plugin) {
    InstalaColunas(ctx, {std::string(tabela), std::string(plugin)});
    InstalaTabela(ctx, std::string(tabela), recria);
    InstalaPesquisasPlugin(ctx, tabela, plugin);
}

void AtualizaCamposPersonalizados(TContexto& ctx) {
    ctx.Tela().LblAtual("Atualizando Campos Personalizados...");
    std::vector<TDono> donos;
    TWKDQuery q(ctx.Conexao(), "select arquivo,cod_plugin from satrib_user group by arquivo,cod_plugin");
    for (q.Open(); !q.Eof(); q.Next()) donos.push_back({q.Texto("arquivo"), q.Texto("cod_plugin")});
    for (const TDono& dono : donos) InstalaCamposPlugin(ctx, dono.tabela, false, dono.plugin);
}

}  // namespace wkd
