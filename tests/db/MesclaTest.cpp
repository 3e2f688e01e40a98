#include "datamodule/Mescla.h"

#include "DataModuloApoio.h"

namespace wkd {
namespace {

constexpr const char* kInsereSatrib = "INSERT INTO SATRIB SELECT * from satrib_user where satrib_user.arquivo = ";

class MesclaTest : public TDataModuloTest {
  protected:
    MesclaTest() {
        Executa("create table SATRIB (ARQUIVO varchar(50), NOME varchar(25), TIPO varchar(25))");
        Executa("create table SATRIB_USER (ARQUIVO varchar(50), NOME varchar(25), TIPO varchar(25))");
        Executa("create table SARQUIVO (COD_MODULO varchar(3), NOME_ARQUIVO varchar(50), VERSAO integer)");
        Executa("create table SARQUIVO_USER (COD_MODULO varchar(3), NOME_ARQUIVO varchar(50), VERSAO integer)");
        for (const char* linha : {"'TCLI', 'CODIGO', 'a'", "'TCLI', 'U_VELHO', 'a'", "'TPED', 'U_VELHO', 'a'"})
            Executa("insert into SATRIB values (" + std::string(linha) + ")");
        for (const char* linha : {"'TCLI', 'U_NOVO', 'b'", "'TPED', 'U_X', 'b'"})
            Executa("insert into SATRIB_USER values (" + std::string(linha) + ")");
        Executa("insert into SARQUIVO_USER values ('Z', 'TCLI', 7)");
        comandos_.clear();
    }

    std::string Satrib() { return Linhas("select ARQUIVO, NOME, TIPO from SATRIB order by 1, 2"); }
};

TEST_F(MesclaTest, CustomColumnsOfOneTableAreReplacedByTheToldStatements) {
    dm_.MesclaCamposPersonalizados("TCLI");
    EXPECT_EQ(Satrib(), "TCLI|CODIGO|a;TCLI|U_NOVO|b;TPED|U_VELHO|a");
    EXPECT_EQ(Linhas("select * from SARQUIVO"), "Z|TCLI|7");
    EXPECT_TRUE(Executou("DELETE FROM SATRIB WHERE NOME STARTING 'U_'  AND ARQUIVO = 'TCLI'"));
    EXPECT_TRUE(Executou(kInsereSatrib + std::string("'TCLI'")));
    EXPECT_TRUE(Executou("INSERT INTO SARQUIVO SELECT * from SARQUIVO_user where NOME_ARQUIVO = 'TCLI'"));

    dm_.MesclaCamposPersonalizados("TCLI");
    EXPECT_EQ(Linhas("select count(*) from SATRIB"), "3");
    EXPECT_EQ(Linhas("select * from SARQUIVO"), "Z|TCLI|7") << "the row was there already";
}

TEST_F(MesclaTest, RowsPresentByKeyAreLeftOutAndTheOthersCopied) {
    Executa("insert into SATRIB_USER values ('TCLI', 'CODIGO', 'meu')");
    dm_.MesclaCamposPersonalizados("TCLI");
    EXPECT_EQ(Satrib(), "TCLI|CODIGO|a;TCLI|U_NOVO|b;TPED|U_VELHO|a");
}

TEST_F(MesclaTest, DifferentLayoutsMeetInTheirCommonColumns) {
    Executa("drop table SATRIB_USER");
    Executa("create table SATRIB_USER (TIPO varchar(25), EXTRA integer, NOME varchar(25), ARQUIVO varchar(50))");
    Executa("insert into SATRIB_USER values ('b', 1, 'U_NOVO', 'TCLI')");
    dm_.MesclaCamposPersonalizados("TCLI");
    EXPECT_EQ(Satrib(), "TCLI|CODIGO|a;TCLI|U_NOVO|b;TPED|U_VELHO|a");
}

TEST_F(MesclaTest, ARequiredColumnThatTheCustomersTableLacksGetsAValue) {
    Executa("drop table SATRIB");
    Executa(
        "create table SATRIB (ARQUIVO varchar(50) not null, NOME varchar(25) not null, TIPO varchar(25),"
        " IDIOMA varchar(5) not null, NIVEL integer default 7 not null, DESDE date not null,"
        " constraint PK_SATRIB primary key (ARQUIVO, NOME, IDIOMA))");
    for (int vez = 0; vez < 2; ++vez) {  // present by that key at the second time
        Executa(ComandoDeMescla(dm_, {"SATRIB", "from satrib_user", "satrib_user.arquivo = 'TCLI'"}));
        EXPECT_EQ(Linhas("select ARQUIVO, NOME, TIPO, IDIOMA, NIVEL from SATRIB where DESDE >= current_date"),
                  "TCLI|U_NOVO|b|0|7");
    }
}

TEST_F(MesclaTest, AFailingInsertLeavesTheOldColumns) {
    const std::string antes = Satrib();
    Executa("create exception RECUSA 'recusado'");
    Executa(
        "create trigger TR for SATRIB before insert as begin if (new.NOME starting 'U_') then exception RECUSA; end");
    dm_.MesclaCamposPersonalizados("TCLI");
    EXPECT_EQ(Satrib(), antes);
    EXPECT_FALSE(dm_.SQLConnection1.InTransaction());

    Executa("drop table SATRIB_USER");
    dm_.EsqueceColunas("SATRIB_USER");
    dm_.MesclaCamposPersonalizados("TCLI");
    EXPECT_EQ(Satrib(), antes) << "without the customer's table";
}

TEST_F(MesclaTest, InAnOpenTransactionOnlyTheFailingMergeIsUndone) {
    Executa("drop table SATRIB_USER");
    TTransacao transacao(dm_.SQLConnection1);
    dm_.SQLConnection1.Prepara("insert into SATRIB values ('TCLI', 'OUTRA', 'c')")->Executa();
    dm_.MesclaCamposPersonalizados("TCLI");
    transacao.Commit();
    EXPECT_EQ(Satrib(), "TCLI|CODIGO|a;TCLI|OUTRA|c;TCLI|U_VELHO|a;TPED|U_VELHO|a");
    EXPECT_EQ(Linhas("select * from SARQUIVO"), "Z|TCLI|7");
}

TEST_F(MesclaTest, EveryKindHasItsOwnDelete) {
    Fala("tbOracle");
    dm_.MesclaCamposPersonalizados("T'X");
    EXPECT_EQ(tela_.infos, std::vector<std::string>{"Implementar para oracle"});
    EXPECT_TRUE(Executou(kInsereSatrib + std::string("'T''X'")));
    EXPECT_TRUE(Executou("INSERT INTO SARQUIVO SELECT * from SARQUIVO_user where NOME_ARQUIVO = 'T''X'"));

    Fala("tbMySQL");
    dm_.MesclaCamposPersonalizados("TCLI");
    EXPECT_EQ(Linhas("select count(*) from SATRIB where ARQUIVO = 'TCLI'"), "3") << "nothing was deleted";

    Executa("delete from SATRIB");
    Fala("tbSQLServer");
    dm_.MesclaCamposPersonalizados("TCLI");
    EXPECT_EQ(Satrib(), "") << "its delete means nothing to Firebird, so the insert does not run either";
}

TEST_F(MesclaTest, SearchesAndLookupsAreCopiedOnceWhateverKeyTheirTablesHave) {
    const struct {
        std::string tabela, colunas, doPacote, doCliente, depois;
    } casos[] = {
        {"SPESQ",
         "(ARQUIVO varchar(50) not null, SEQ integer not null, NOMEPESQUISA varchar(50), primary key (ARQUIVO, SEQ))",
         "'T', 1, 'A'", "'T', 2, 'A'", "T|1|A;T|2|A"},
        {"SPESQAUX", "(ARQUIVO varchar(50), NOME varchar(50), SEQ integer, CAMPOS varchar(25))", "'T', 'A', 1, 'X'",
         "'T', 'U_A', null, 'X'", "T|A|1|X;T|U_A|<null>|X"},
        {"SLOOKUP", "(ARQUIVO varchar(50), CAMPO varchar(25), CAMPOPAI varchar(25), CAMPOFILHO varchar(25))",
         "'T', 'A', 'P', 'F'", "'T', 'A', 'P', 'G'", "T|A|P|F;T|A|P|G"},
    };
    for (const auto& caso : casos)
        for (const std::string& tabela : {caso.tabela, caso.tabela + "_USER"}) {
            Executa("create table " + tabela + caso.colunas);
            Executa("insert into " + tabela + " values (" + caso.doPacote + ")");
            if (tabela != caso.tabela) Executa("insert into " + tabela + " values (" + caso.doCliente + ")");
        }
    for (int vez = 0; vez < 2; ++vez) {
        dm_.MesclaPesquisasELookups();
        for (const auto& caso : casos)
            EXPECT_EQ(Linhas("select * from " + caso.tabela + " order by 1, 2, 3"), caso.depois) << caso.tabela;
    }
    for (const auto& caso : casos) Executa("delete from " + caso.tabela + "_USER");
    comandos_.clear();
    dm_.MesclaPesquisasELookups();
    EXPECT_EQ(comandos_.size(), 1u) << "one question for all three, and nothing is written";
    Executa("drop table SPESQAUX_USER");
    Executa("insert into SLOOKUP_USER values ('T', 'B', 'P', 'F')");
    dm_.MesclaPesquisasELookups();
    EXPECT_EQ(Linhas("select CAMPO from SLOOKUP order by 1"), "A;A;B") << "a table that is missing hides no other";
}

}  // namespace
}  // namespace wkd
