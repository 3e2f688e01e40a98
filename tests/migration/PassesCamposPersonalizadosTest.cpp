#include "PassesApoio.h"
#include "passes/CamposPersonalizados.h"

namespace wkd {
namespace {

class PassesCamposPersonalizadosTest : public TPassesTest {
  protected:
    PassesCamposPersonalizadosTest() {
        ExecutaTudo({"create table TCLI (CODIGO integer not null, constraint PK_TCLI primary key (CODIGO))",
                     "insert into TCLI values (1)"});
        Colunas("SATRIB", {"'TCLI', 1, 'CODIGO', 'ftInteger', 1, null", "'TCLI', 8, 'U_VELHA', 'ftInteger', 0, 'P1'",
                           "'TCLI', 9, 'U_OUTRO', 'ftInteger', 0, 'P2'", "'TCLI', 10, 'U_SEM', 'ftInteger', 0, null"});
        Colunas("SATRIB_USER",
                {"'TCLI', 11, 'U_NOVA', 'ftInteger', 0, 'P1'", "'TCLI', 12, 'U_COMMIT', 'ftInteger', 0, 'P1'",
                 "'TCLI', 10, 'U_SEM', 'ftString', 0, null", "'U_MEU', 1, 'U_COD', 'ftInteger', 1, 'P1'",
                 "'U_NOTAS', 1, 'U_TEXTO', 'ftString', 0, 'P1'"});
        Insere("SLOOKUP (CAMPO, COD_PLUGIN, ARQUIVO)", {"'U_VELHA', 'P1'", "'CIDADE', 'P1'", "'U_SEM', null"});
        Insere("SLOOKUP_USER (CAMPO, COD_PLUGIN, ARQUIVO)", {"'U_NOVA', 'P1'", "'U_SEM', null", "'U_ALHEIA', 'P9'"});
        Insere("SPESQ (NOMEPESQUISA, COD_PLUGIN, ARQUIVO)", {"'TCLI_P_U_VELHA', 'P1'", "'TCLI_NOME', 'P1'"});
        Insere("SPESQ_USER (NOMEPESQUISA, COD_PLUGIN, ARQUIVO)", {"'TCLI_P_U_NOVA', 'P1'", "'TCLI_P_U_SEM', null"});
        Insere("SPESQAUX (NOME, COD_PLUGIN, ARQUIVO)", {"'TCLI_P_U_VELHA', 'P1'"});
        Insere("SPESQAUX_USER (NOME, COD_PLUGIN, ARQUIVO)", {"'TCLI_P_U_NOVA', 'P1'"});
        comandos_.clear();
    }

    void Insere(const std::string& destino, const std::vector<std::string>& linhas) {
        for (const auto& linha : linhas) Executa("insert into " + destino + " values (" + linha + ", 'TCLI')");
    }
    void Colunas(const std::string& tabela, const std::vector<std::string>& linhas) {
        for (const auto& linha : linhas)
            Executa("insert into " + tabela +
                    " (ARQUIVO, SEQUENCIA, NOME, TIPO, CHAVE_DE_PESQUISA, COD_PLUGIN) values (" + linha + ")");
    }
    std::string Satrib() { return Linhas("select ARQUIVO, NOME, TIPO, COD_PLUGIN from SATRIB order by 1, 2"); }
};

TEST_F(PassesCamposPersonalizadosTest, EveryPluginGetsItsColumnsLookupsAndSearchesAgain) {
    AtualizaCamposPersonalizados(ctx_);
    EXPECT_EQ(tela_.atuais, std::vector<std::string>{"Atualizando Campos Personalizados..."});
    EXPECT_EQ(
        Satrib(),
        "TCLI|CODIGO|ftInteger|<null>;TCLI|U_COMMIT|ftInteger|P1;TCLI|U_NOVA|ftInteger|P1;TCLI|U_OUTRO|ftInteger|P2;"
        "TCLI|U_SEM|ftInteger|<null>;U_MEU|U_COD|ftInteger|P1;U_NOTAS|U_TEXTO|ftString|P1")
        << "what has no plug-in code is not deleted, so it stays as it was";
    EXPECT_EQ(Linhas("select CAMPO, COD_PLUGIN from SLOOKUP order by 1"), "CIDADE|P1;U_NOVA|P1;U_SEM|<null>");
    EXPECT_EQ(Linhas("select NOMEPESQUISA from SPESQ order by 1"), "TCLI_NOME;TCLI_P_U_NOVA")
        << "searches without plug-in code are not copied";
    EXPECT_EQ(Linhas("select NOME from SPESQAUX"), "TCLI_P_U_NOVA");
    EXPECT_TRUE(dm_.VerificaExisteCampo("TCLI", "U_NOVA"));
    EXPECT_TRUE(dm_.VerificaExisteCampo("TCLI", "U_COMMIT"));
    EXPECT_TRUE(dm_.ExisteTabela("U_MEU"));
    EXPECT_TRUE(dm_.ExisteTabela("U_NOTAS")) << "without key, which is no fault";
    EXPECT_EQ(dm_.SQLConnection1.ChavePrimaria("U_MEU").nome, "PK_U_MEU");
    EXPECT_EQ(Linhas("select CODIGO from TCLI"), "1");
    EXPECT_TRUE(tela_.memo2.empty()) << tela_.memo2.front();

    const std::string depois = Retrato();
    AtualizaCamposPersonalizados(ctx_);
    EXPECT_EQ(Retrato(), depois);
}

TEST_F(PassesCamposPersonalizadosTest, ARefusedCopyLeavesTheOldRowsAndARefusedTableIsReported) {
    Executa("create exception RECUSA 'recusado'");
    Executa("create trigger TR for SATRIB before insert as begin if (new.NOME = 'U_NOVA') then exception RECUSA; end");
    const std::string antes = Satrib();
    EXPECT_THROW(InstalaCamposPlugin(ctx_, "TCLI", false, "P1"), TErroBanco);
    EXPECT_EQ(Satrib(), antes);
    EXPECT_EQ(Linhas("select CAMPO from SLOOKUP order by 1"), "CIDADE;U_SEM;U_VELHA");

    Executa("drop trigger TR");
    Executa("update SATRIB_USER set TIPO = 'ftNada', CHAVE_DE_PESQUISA = 0 where ARQUIVO = 'U_MEU'");
    InstalaCamposPlugin(ctx_, "U_MEU", false, "P1");
    EXPECT_TRUE(TTelaDeTeste::Contem(tela_.memo2, "Campos personalizados: Tabela U_MEU - "));
    EXPECT_EQ(tela_.log.size(), tela_.memo2.size());
}

TEST_F(PassesCamposPersonalizadosTest, RecreatingKeepsTheRows) {
    Executa("insert into SARQUIVO (COD_MODULO, NOME_ARQUIVO, VERSAO) values ('1', 'TCLI', 1)");
    InstalaCamposPlugin(ctx_, "TCLI", true, "P1");
    EXPECT_EQ(Linhas("select CODIGO, U_NOVA from TCLI"), "1|<null>");
    EXPECT_EQ(dm_.SQLConnection1.ChavePrimaria("TCLI").colunas, std::vector<std::string>{"CODIGO"});
}

TEST_F(PassesCamposPersonalizadosTest, OracleSaysThatNothingIsDeletedOtherKindsSayNothingAndAllCopy) {
    for (const std::string tipo : {"tbOracle", "tbMySQL"}) {
        Fala(tipo);
        ApagaCamposPlugin(ctx_, "TCLI", "P1", false, true);
        InstalaPesquisasPlugin(ctx_, "TCLI", "P1");
        EXPECT_EQ(tela_.infos, (std::vector<std::string>{"Implementar para oracle", "Implementar para oracle"}))
            << tipo;
        EXPECT_EQ(Linhas("select NOMEPESQUISA from SPESQ order by 1"), "TCLI_NOME;TCLI_P_U_NOVA;TCLI_P_U_VELHA")
            << tipo;
    }
    EXPECT_EQ(Linhas("select NOME from SATRIB where COD_PLUGIN = 'P1' order by 1"), "U_VELHA");
}

TEST_F(PassesCamposPersonalizadosTest, SqlServerFindsTheCustomerNamesByPattern) {
    Fala("tbSQLServer");
    for (const bool campos : {true, false}) {
        try {
            ApagaCamposPlugin(ctx_, "tcli", "O'P", !campos, campos);
            ADD_FAILURE() << "Firebird knows no {ESCAPE}";
        } catch (const TErroBanco& erro) {
            EXPECT_EQ(erro.Comando(), campos ? "DELETE FROM SATRIB WHERE NOME LIKE 'U\\_%' {ESCAPE '\\'} AND ARQUIVO = "
                                               "'tcli' and cod_plugin = 'O''P'"
                                             : "DELETE FROM SPESQ WHERE NOMEPESQUISA LIKE  'TCLI\\_P\\_U\\_%'  {ESCAPE "
                                               "'\\'}  AND ARQUIVO = 'tcli' and cod_plugin = 'O''P'");
        }
    }
}

}  // namespace
}  // namespace wkd
