#include "server/HBNConnection.h"

#include "DataModuloApoio.h"
#include "rows/ClientDataSet.h"

namespace wkd {
namespace {

class HBNConnectionTest : public TDataModuloTest {
  protected:
    THBNConnection& conexao_ = dm_.SQLConnection1;
};

TEST_F(HBNConnectionTest, KindsWithoutDriverAreRefusedByName) {
    const struct {
        const char *tipo, *parte;
    } casos[] = {{"tbinterbase", "não é conhecido"},
                 {"", "não é conhecido"},
                 {"tbMySQL", "não tem driver"},
                 {"tbOracle", "não tem driver"}};
    for (const auto& caso : casos) {
        ini_.INIGravaString("Outro", "TipoBanco", caso.tipo);
        THBNConnection conexao(ini_);
        conexao.SetAlias("Outro");
        try {
            conexao.Open();
            FAIL() << caso.tipo;
        } catch (const TErroConfiguracao& erro) {
            const std::string texto = erro.what();
            EXPECT_NE(texto.find('"' + std::string(caso.tipo) + '"'), std::string::npos) << texto;
            EXPECT_NE(texto.find(caso.parte), std::string::npos) << texto;
        }
        EXPECT_FALSE(conexao.Connected());
        EXPECT_THROW(conexao.StartTransaction(), TErroBanco);
    }
}

TEST_F(HBNConnectionTest, TheDialectIsThatOfTheAlias) {
    THBNConnection nova(ini_);
    ini_.INIGravaString("HBN", "TipoBanco", "tbOracle");
    EXPECT_EQ(nova.TipoBanco(ini_.Caminho()), TTipoBanco::tbOracle);
    nova.SetAlias("tbODBC");
    EXPECT_EQ(nova.TipoBanco(), TTipoBanco::tbSQLServer);
    EXPECT_EQ(nova.TipoBanco(ini_.Caminho()), TTipoBanco::tbSQLServer);
    nova.SetAlias(" ");
    EXPECT_EQ(nova.TipoBanco(), TTipoBanco::tbSQLServer) << "an empty name loads nothing";
    EXPECT_THROW(nova.SetAlias("Nenhum"), TErroConfiguracao);
    EXPECT_THROW(nova.Open(), TErroConfiguracao) << "not the database of the alias before";
}

TEST_F(HBNConnectionTest, OnlySqlServerGetsItsDateFormatAfterTheConnect) {
    EXPECT_FALSE(Executou("set dateformat mdy"));
    for (const char* alias : {"tbSQLServer", "tbODBC"}) {
        comandos_.clear();
        EXPECT_THROW(Conecta(alias), TErroBanco) << "Firebird does not know the statement";
        EXPECT_TRUE(Executou("set dateformat mdy"));
    }
}

TEST_F(HBNConnectionTest, AFirebirdTextWithCommitRunsNothing) {
    Executa("create table T (A varchar(20))");
    comandos_.clear();
    for (const char* sql : {"COMMIT", "Commit;", "insert into T values ('commit')"}) conexao_.ExecuteDirect(sql);
    EXPECT_TRUE(comandos_.empty());
    conexao_.ExecuteDirect("insert into T values ('x')");
    EXPECT_FALSE(conexao_.InTransaction());
    EXPECT_EQ(Linhas("select A from T"), "x");
}

TEST_F(HBNConnectionTest, OracleReadsItsTableListAndCommits) {
    Executa("create table USER_TABLES (TABLE_NAME varchar(30))");
    Executa("insert into USER_TABLES values ('XLOG')");
    Fala("tbOracle");
    comandos_.clear();
    EXPECT_THROW(conexao_.NomesDeTabelas(), TErroBanco) << "Firebird refuses a commit without transaction";
    ASSERT_GE(comandos_.size(), 2u);
    EXPECT_EQ(comandos_[0], "SELECT * FROM USER_TABLES");
    EXPECT_EQ(comandos_[1], "commit");
}

TEST_F(HBNConnectionTest, ColumnDictionaryIsCopiedFromTheCacheUntilItIsReadAgain) {
    TClientDataSet alvo;
    conexao_.SAtrbi("TCLI", alvo);
    EXPECT_FALSE(alvo.Active()) << "no column dictionary in this database";

    Executa("create table SATRIB (ARQUIVO varchar(50), NOME varchar(25), SEQUENCIA integer, COMENTARIO blob)");
    Executa("insert into SATRIB values ('TCLI', 'B', 2, 'ação')");
    Executa("insert into SATRIB values ('TCLI', 'A', 1, null)");
    Executa("insert into SATRIB values ('TPED', 'C', 1, null)");
    conexao_.AtualizaSAtrib();
    Executa("delete from SATRIB where NOME = 'A'");

    conexao_.SAtrbi("tcli", alvo);
    ASSERT_EQ(alvo.RecordCount(), 2u);
    EXPECT_EQ(alvo.Texto("NOME"), "A");
    alvo.Next();
    EXPECT_EQ(alvo.Texto("COMENTARIO"), "ação");
    conexao_.SAtrbi("TNADA", alvo);
    EXPECT_TRUE(alvo.Active() && alvo.IsEmpty());
    conexao_.Open();
    conexao_.SAtrbi("TCLI", alvo);
    EXPECT_EQ(alvo.RecordCount(), 1u) << "a new connect reads again";
}

TEST_F(HBNConnectionTest, ACommandOutlivesTheRenewalOfItsConnection) {
    Executa("create table T (A integer)");
    const auto comando = conexao_.Prepara("insert into T values (1)");
    comando->Executa();
    conexao_.Open();
    comando->Executa();
    EXPECT_EQ(Linhas("select count(*) from T"), "2");
}

TEST_F(HBNConnectionTest, DescribesWhereTheAliasPoints) {
    const struct {
        THBNConnection::TDadosConexao dados;
        const char* texto;
    } casos[] = {{{"srv", "C:\\d", "e.fdb"}, "srv:C:\\d\\e.fdb"},
                 {{"srv", "C:\\d\\", "e.fdb"}, "srv:C:\\d\\e.fdb"},
                 {{"", "/d/", "e.fdb"}, "/d/e.fdb"}};
    for (const auto& caso : casos) {
        ini_.INIGravaString("tbInterbase", "Hostname", caso.dados.hostname);
        ini_.INIGravaString("tbInterbase", "Path", caso.dados.path);
        ini_.INIGravaString("tbInterbase", "DataBase", caso.dados.database);
        EXPECT_EQ(conexao_.RetornaDadosConexao().Texto(), caso.texto);
    }
}

}  // namespace
}  // namespace wkd
