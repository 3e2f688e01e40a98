// What each kind of server is sent, on a connection that only takes note of it.
#include <algorithm>

#include "ConexaoGravada.h"
#include "PassesApoio.h"
#include "corrections/Correcoes.h"
#include "passes/CamposPersonalizados.h"
#include "passes/Passes.h"

namespace wkd {
namespace {

/// Statements that the passes send to a server of one kind, in order.
std::vector<std::string> Enviados(const std::string& tipoBanco, const std::function<void(TContexto&)>& passes,
                                  TTelaDeTeste& tela) {
    const TPastaTemporaria pasta;
    const TAliases ini(pasta / "WKD.ini");
    ini.INIGravaString("A", "TipoBanco", tipoBanco);
    TConexaoGravada* gravada = nullptr;
    TDataModulo dm(ini, tela, [&](auto...) {
        auto nova = std::make_unique<TConexaoGravada>();
        gravada = nova.get();
        return nova;
    });
    dm.SQLConnection1.SetAlias("A");
    dm.SQLConnection1.Open();
    gravada->pedidos.clear();
    TOpcoes opcoes;
    TEstado estado;
    TContexto ctx{dm, opcoes, estado, {}, {}};
    passes(ctx);
    std::vector<std::string> pedidos = gravada->pedidos;
    for (auto& pedido : pedidos)
        if (pedido.ends_with(" []")) pedido.resize(pedido.size() - 3);
    return pedidos;
}

TEST(PassesDeCadaServidorTest, APluginIsInstalledInTheWordsOfTheServer) {
    const std::string dono = " AND ARQUIVO = 'tcli' and cod_plugin = 'O''P'";
    const std::vector<std::string> copiasDeColunas = {
        "INSERT INTO SLOOKUP SELECT * FROM SLOOKUP_USER where SLOOKUP_USER.arquivo = 'tcli' and coalesce(cod_plugin, "
        "'') = 'O''P'",
        "INSERT INTO SATRIB SELECT * from satrib_user where satrib_user.arquivo = 'tcli' and coalesce(cod_plugin, '') "
        "= "
        "'O''P'"};
    const std::vector<std::string> copiasDePesquisas = {
        "INSERT INTO SPESQ SELECT * from SPESQ_user where SPESQ_user.arquivo = 'tcli' and cod_plugin = 'O''P'",
        "INSERT INTO SPESQAUX SELECT * from SPESQAUX_user where SPESQAUX_user.arquivo = 'tcli' and cod_plugin = "
        "'O''P'"};
    const struct {
        std::string tipo;
        std::vector<std::string> colunas, pesquisas, avisos;
    } casos[] = {
        {"tbInterbase",
         {"DELETE FROM SATRIB WHERE NOME STARTING 'U_' " + dono,
          "delete from SLOOKUP where SLOOKUP.arquivo = 'tcli' AND CAMPO STARTING 'U_' and cod_plugin = 'O''P'"},
         {"DELETE FROM SPESQ WHERE NOMEPESQUISA STARTING  'TCLI_P_U_'" + dono,
          "DELETE FROM SPESQAUX WHERE NOME STARTING 'TCLI_P_U_'" + dono},
         {}},
        {"tbSQLServer",
         {"DELETE FROM SATRIB WHERE NOME LIKE 'U\\_%' {ESCAPE '\\'}" + dono,
          "delete from SLOOKUP where SLOOKUP.arquivo = 'tcli' AND CAMPO LIKE 'U\\_%' {ESCAPE '\\'} and cod_plugin = "
          "'O''P'"},
         {"DELETE FROM SPESQ WHERE NOMEPESQUISA LIKE  'TCLI\\_P\\_U\\_%'  {ESCAPE '\\'} " + dono,
          "DELETE FROM SPESQAUX WHERE NOME LIKE 'TCLI\\_P\\_U\\_%'    {ESCAPE '\\'} " + dono},
         {}},
        {"tbOracle", {}, {}, {"Implementar para oracle", "Implementar para oracle"}},
        {"tbMySQL", {}, {}, {}},
    };
    for (const auto& caso : casos) {
        TTelaDeTeste tela;
        auto enviados = Enviados(
            caso.tipo, [](TContexto& ctx) { InstalaCamposPlugin(ctx, "tcli", false, "O'P"); }, tela);
        std::erase_if(enviados, [](const auto& sql) {
            return !sql.starts_with("INSERT") && !sql.starts_with("DELETE") && !sql.starts_with("delete");
        });
        std::vector<std::string> esperados = caso.colunas;
        for (const auto* lista : {&copiasDeColunas, &caso.pesquisas, &copiasDePesquisas})
            esperados.insert(esperados.end(), lista->begin(), lista->end());
        EXPECT_EQ(enviados, esperados) << caso.tipo;
        EXPECT_EQ(tela.infos, caso.avisos) << caso.tipo;
    }
}

TEST(PassesDeCadaServidorTest, EveryKindButSqlServerGetsTheSameCorrections) {
    const auto correcoes = [](const std::string& tipo) {
        TTelaDeTeste tela;
        auto enviados = Enviados(
            tipo,
            [](TContexto& ctx) {
                QuerysAnteriores(ctx);
                QuerysPosteriores(ctx);
            },
            tela);
        std::erase_if(enviados, [](const auto& sql) { return sql.starts_with("Update TINI") || sql == "commit"; });
        return enviados;
    };
    const auto firebird = correcoes("tbInterbase");
    EXPECT_EQ(firebird.size(), 39U + 13U) << "one statement each, but for one that has 13";
    EXPECT_EQ(std::ranges::count_if(firebird, [](const auto& sql) { return sql.find(" FIRST 1 ") != sql.npos; }), 1);
    for (const std::string tipo : {"tbMySQL", "tbOracle"}) {
        auto outros = correcoes(tipo);
        ASSERT_EQ(outros.size(), firebird.size()) << tipo;
        for (std::size_t i = 0; i < outros.size(); ++i)
            EXPECT_EQ(outros[i], Troca(firebird[i], " FIRST ", " TOP ")) << tipo;
    }
    const auto sqlServer = correcoes("tbSQLServer");
    EXPECT_EQ(sqlServer.size(), 38U + 10U);
    for (const auto& sql : sqlServer) {
        EXPECT_EQ(sql.find(" type "), std::string::npos) << sql;
        EXPECT_EQ(sql.find(" FIRST 1 "), std::string::npos) << sql;
    }
}

TEST(PassesDeCadaServidorTest, OrphansAreDeletedByOneStatementOfSeveralLines) {
    TTelaDeTeste tela;
    for (const std::string tipo : {"tbInterbase", "tbSQLServer", "tbOracle", "tbMySQL"})
        EXPECT_EQ(Enviados(tipo, AtualizaLookup, tela),
                  std::vector<std::string>{"delete\r\nfrom slookup\r\nwhere\r\n  not exists (\r\n    select "
                                           "nome_arquivo\r\n    from sarquivo\r\n    where nome_arquivo = "
                                           "slookup.ARQUIVO\r\n  )"})
            << tipo;
}

}  // namespace
}  // namespace wkd
