#include "Arquivos.h"
#include "PassesApoio.h"
#include "context/CargaDoPacote.h"
#include "package/Pacote.h"
#include "passes/Passes.h"

namespace wkd {
namespace {

using PassesTest = TPassesTest;

TEST_F(PassesTest, ThePanelOfAPackageThatCannotBeUnpackedGoesWithIt) {
    const auto pasta = banco_.Arquivo().parent_path();
    EscreveArquivo(pasta / "A.rtm", std::string(1000, 'x'));
    CompactaZip({pasta / "A.rtm"}, opcoes_.pacote = pasta / "pacote.zip");
    std::string bytes = LeArquivo(opcoes_.pacote);
    bytes[40] = static_cast<char>(bytes[40] ^ 0x55);
    EscreveArquivo(opcoes_.pacote, bytes);
    TPastaDeTrabalho trabalho(pasta);
    EXPECT_THROW((void)Desempacota(ctx_, trabalho), TErroPacote);
    EXPECT_EQ(tela_.ocupados.size(), 1U);
    EXPECT_FALSE(tela_.ocupado);
}

TEST_F(PassesTest, RepeatedTablesLoseAllTheirRowsAndOneThatCannotBeDeletedKeepsNoOther) {
    for (const std::string par : {"'1', 'TCLI'", "'2', 'TCLI'", "'1', 'TPED'", "'1', 'TCLI'", "'1', 'TCLI'",
                                  "'1', 'D''AGUA'", "'1', 'D''AGUA'", "'2', 'TZ'", "'2', 'TZ'"})
        Executa("insert into SARQUIVO (COD_MODULO, NOME_ARQUIVO) values (" + par + ")");
    dm_.SQLConnection1.Observa([](std::string_view sql) {
        if (sql.find("'TCLI'") != std::string_view::npos) throw TErroBanco({"em uso", 0, "", "", TFalha::EmUso, false});
    });
    EXPECT_THROW(VerificaDuplicidadeSarquivo(ctx_), TErroBanco);
    dm_.SQLConnection1.Observa({});
    EXPECT_EQ(Linhas("select COD_MODULO, NOME_ARQUIVO from SARQUIVO order by 1, 2"),
              "1|TCLI;1|TCLI;1|TCLI;1|TPED;2|TCLI");
    VerificaDuplicidadeSarquivo(ctx_);
    EXPECT_EQ(Linhas("select NOME_ARQUIVO from SARQUIVO order by 1"), "TCLI;TPED");
}

TEST_F(PassesTest, TablesOfTwoModulesWhoseNamesReadTheSameTogetherAreTwo) {
    for (const std::string par : {"'1', 'T1'", "'11', 'T'"})
        Executa("insert into SARQUIVO (COD_MODULO, NOME_ARQUIVO) values (" + par + ")");
    VerificaDuplicidadeSarquivo(ctx_);
    EXPECT_EQ(Linhas("select COD_MODULO, NOME_ARQUIVO from SARQUIVO order by 1, 2"), "1|T1;11|T");
}

TEST_F(PassesTest, ColumnsAndLookupsOfUnknownTablesAreDeleted) {
    ExecutaTudo({"insert into SARQUIVO (COD_MODULO, NOME_ARQUIVO) values ('1', 'TCLI')",
                 "insert into SATRIB (ARQUIVO, NOME) values ('TCLI', 'CODIGO')",
                 "insert into SATRIB (ARQUIVO, NOME) values ('TVELHA', 'CODIGO')",
                 "insert into SLOOKUP (ARQUIVO, CAMPO) values ('TCLI', 'CIDADE')",
                 "insert into SLOOKUP (ARQUIVO, CAMPO) values ('TVELHA', 'CIDADE')"});
    ApagaAtributosOrfaos(ctx_);
    EXPECT_EQ(Linhas("select ARQUIVO from SATRIB"), "TCLI");
    EXPECT_EQ(Linhas("select ARQUIVO from SLOOKUP"), "TCLI;TVELHA");
    AtualizaLookup(ctx_);
    EXPECT_EQ(Linhas("select ARQUIVO from SLOOKUP"), "TCLI");
}

TEST_F(PassesTest, DefaultsFillOnlyTheNullsAndOneThatFailsKeepsNoOther) {
    ExecutaTudo(
        {"create table TCLI (CODIGO integer, A varchar(10), B varchar(10), C varchar(3), D integer, E varchar(9))",
         "insert into TCLI (CODIGO, A) values (1, '')", "insert into TCLI (CODIGO, A) values (2, 'x')",
         "insert into TCLI (CODIGO) values (3)"});
    for (const std::string coluna :
         {"'A', '1,5', 'ftFloat'", "'B', '1,5', 'ftString'", "'C', 'longo demais', 'ftString'",
          "'D', 'letras', 'ftInteger'", "'NAO_HA', '1', 'ftString'", "'CODIGO', '', 'x'", "'E', 'o''brien', 'ftString'",
          "'e', 'commit', 'ftString'"})
        Executa("insert into SATRIB (ARQUIVO, NOME, VALOR_PADRAO, TIPO) values ('TCLI', " + coluna + ")");
    comandos_.clear();
    AtualizaValorPadrao(ctx_);
    EXPECT_EQ(Linhas("select * from TCLI order by CODIGO"),
              "1||1,5|<null>|<null>|o'brien;2|x|1,5|<null>|<null>|o'brien;3|1.5|1,5|<null>|<null>|o'brien");
    EXPECT_EQ(Executados("Update TCLI set A = '1.5' where A is null "), 1);
    EXPECT_EQ(Executados("Update TCLI set NAO_HA"), 0);
    EXPECT_TRUE(tela_.memo1.empty() && tela_.memo2.empty() && tela_.log.empty());
}

class LookupFisicoTest : public TPassesTest {
  protected:
    LookupFisicoTest() {
        ExecutaTudo(
            {"create table TCID (UF varchar(2), COD integer, NOME varchar(20))",
             "create table TCLI (CODIGO integer, UF varchar(2), CID integer, PAI integer, NOME_CID varchar(20), "
             "NOME_PAI varchar(20), SEM varchar(20))",
             "insert into TCID values ('SP', 1, 'Campinas')", "insert into TCID values ('PR', 1, 'Maringá')",
             "insert into TCLI values (1, 'PR', 1, null, 'velho', 'velho', 'velho')",
             "insert into TCLI values (2, 'SC', 1, 1, 'velho', 'velho', 'velho')"});
        for (const std::string coluna : {"'NOME_CID', 'TCID'", "'NOME_PAI', 'tcli'", "'SEM', 'TCID'", "'CODIGO', ''"})
            Executa("insert into SATRIB (ARQUIVO, NOME, LOOKUP_ARQUIVO, LOOKUP_CP_RETORNO) values ('TCLI', " + coluna +
                    ", 'NOME')");
        ExecutaTudo(
            {"insert into SLOOKUP (ARQUIVO, CAMPO, CAMPOPAI, CAMPOFILHO) values ('TCLI', 'NOME_CID', 'UF', 'UF')",
             "insert into SLOOKUP (ARQUIVO, CAMPO, CAMPOPAI, CAMPOFILHO) values ('TCLI', 'NOME_CID', 'CID', 'COD')",
             "insert into SLOOKUP (ARQUIVO, CAMPO, CAMPOPAI, CAMPOFILHO) values ('TCLI', 'NOME_PAI', 'PAI', "
             "'CODIGO')"});
    }
};

TEST_F(LookupFisicoTest, LookupColumnsAreFilledOncePerDatabase) {
    AtualizaLookupFisico(ctx_);
    EXPECT_EQ(Linhas("select NOME_CID, NOME_PAI, SEM from TCLI order by CODIGO"),
              "Maringá|velho|velho;<null>|velho|velho");
    EXPECT_EQ(Executados("update TCLI set NOME_CID = (select NOME from TCID where (TCLI.UF = TCID.UF) and (TCLI.CID = "
                         "TCID.COD)) "),
              1);
    EXPECT_EQ(tela_.memo1,
              (std::vector<std::string>{"Ajustando Lookup TCLI.NOME_CID",
                                        "Lookup TCLI.NOME_PAI não ajustado: a tabela de lookup é a própria tabela",
                                        "Ajustando Lookup TCLI.SEM"}));
    EXPECT_EQ(tela_.atual.Maximo(), 3);
    EXPECT_EQ(tela_.atual.Posicao(), 3);
    EXPECT_EQ(Linhas("select * from TINI"), "HBN4|LOOKUPFISICO|SIM");

    Executa("update TCLI set NOME_CID = 'novo'");
    AtualizaLookupFisico(ctx_);
    EXPECT_EQ(Linhas("select distinct NOME_CID from TCLI"), "novo");
}

TEST_F(LookupFisicoTest, ALookupThatWouldRunMoreThanAComparisonIsPassedOverAndTold) {
    const struct {
        const char *lookup, *retorno, *pai, *filho;
    } casos[] = {{"TCID", "max(1)from TCID),PAI=9--", "UF", "UF"},
                 {"TCID),PAI=9--", "max(1)", "UF", "UF"},
                 {"TCID", "COD", "UF or 1=1) ),PAI=9 --", "UF"},
                 {"TCID", "COD", "UF", "UF) ),PAI=9 --"}};
    for (const auto& [lookup, retorno, pai, filho] : casos) {
        ExecutaTudo({"delete from SATRIB", "delete from SLOOKUP", "delete from TINI", "update TCLI set PAI = 1",
                     "insert into SATRIB (ARQUIVO, NOME, LOOKUP_ARQUIVO, LOOKUP_CP_RETORNO) values ('TCLI', 'CID', '" +
                         std::string(lookup) + "', '" + retorno + "')",
                     "insert into SLOOKUP (ARQUIVO, CAMPO, CAMPOPAI, CAMPOFILHO) values ('TCLI', 'CID', '" +
                         std::string(pai) + "', '" + filho + "')"});
        tela_.memo2.clear();
        comandos_.clear();
        AtualizaLookupFisico(ctx_);
        EXPECT_EQ(Linhas("select distinct PAI from TCLI"), "1");
        EXPECT_EQ(Executados("update TCLI"), 0);
        ASSERT_EQ(tela_.memo2.size(), 1U);
        EXPECT_TRUE(tela_.memo2[0].starts_with("Tabela TCLI, lookup CID do dicionário: linha ignorada"))
            << tela_.memo2[0];
    }
}

TEST_F(LookupFisicoTest, WithoutFlagTableOrLookupTableNothingIsTouched) {
    for (const std::string tabela : {"SLOOKUP", "TINI"}) {
        Executa("drop table " + tabela);
        try {
            AtualizaLookupFisico(ctx_);
            ADD_FAILURE() << "no error without " << tabela;
        } catch (const TErroBanco& erro) {
            EXPECT_NE(std::string(erro.what()).find(tabela), std::string::npos) << erro.what();
        }
        EXPECT_EQ(Linhas("select distinct NOME_CID from TCLI"), "velho");
    }
}

TEST_F(PassesTest, TablesWithoutPrimaryKeyGetOneOrAreReported) {
    for (const std::string tabela : {"TA", "TB", "TC"})
        ExecutaTudo(
            {"create table " + tabela + " (CODIGO integer not null" + (tabela == "TA" ? " primary key" : "") + ")",
             "insert into SATRIB (ARQUIVO, SEQUENCIA, NOME, TIPO, CHAVE_DE_PESQUISA) values ('" + tabela +
                 "', 1, 'CODIGO', 'ftInteger', 1)",
             "insert into " + tabela + " values (1)"});
    Executa("insert into TC values (1)");
    Pacote({"TA", "TB", "TC", "TFALTA"});

    verificaIndicesPrimarios(ctx_);
    EXPECT_EQ(dm_.SQLConnection1.ChavePrimaria("TB").nome, "PK_TB");
    EXPECT_EQ(tela_.memo2, (std::vector<std::string>{"Tabela: TC NÃO POSSUI INDICE PRIMARIO",
                                                     "Tabela: TFALTA NÃO POSSUI INDICE PRIMARIO"}));
    ASSERT_EQ(tela_.log.size(), 2U);
    EXPECT_EQ(tela_.log[0].mensagem + tela_.log[0].tabela + tela_.log[0].acao,
              "Tabela: TC - NÃO POSSUI INDICE PRIMARIO");
    EXPECT_EQ(tela_.geral.Maximo(), 4);
    EXPECT_EQ(tela_.geral.Posicao(), 4);
    EXPECT_EQ(tela_.atuais.front(), "Verificando indices primarios...");
    EXPECT_EQ(tela_.atuais.back(), "Verificando indices primarios: Tabela :TFALTA");
}

}  // namespace
}  // namespace wkd
