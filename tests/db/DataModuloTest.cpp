#include "datamodule/DataModulo.h"

#include "DataModuloApoio.h"

namespace wkd {
namespace {

using DataModuloTest = TDataModuloTest;

TEST_F(DataModuloTest, TablesAreKnownFromTheListWithoutAQuery) {
    Executa("create table TCLI (A integer)");
    EXPECT_FALSE(dm_.ExisteTabela("TCLI"));
    dm_.AtualizaListaDeTabelas();
    comandos_.clear();
    EXPECT_TRUE(dm_.ExisteTabela("tcli"));
    EXPECT_FALSE(dm_.ExisteTabela("TCL"));
    EXPECT_TRUE(comandos_.empty());
}

TEST_F(DataModuloTest, ColumnsComeFromTheCacheUntilTheTableIsForgotten) {
    Executa("create table TCLI (NOME varchar(10))");
    Executa("create table TPED (A integer)");
    EXPECT_TRUE(dm_.VerificaExisteCampo("tcli", "nome"));
    EXPECT_TRUE(dm_.VerificaExisteCampo("TPED", "A"));
    EXPECT_FALSE(dm_.VerificaExisteCampo("TNADA", "NOME"));

    Executa("alter table TCLI add B integer");
    Executa("alter table TPED add B integer");
    dm_.EsqueceColunas("tcli");
    EXPECT_TRUE(dm_.VerificaExisteCampo("TCLI", "B"));
    EXPECT_FALSE(dm_.VerificaExisteCampo("TPED", "B")) << "read before, not forgotten";

    Executa("create table TNADA (NOME integer)");
    dm_.AtualizaListaDeTabelas();
    EXPECT_TRUE(dm_.VerificaExisteCampo("TNADA", "NOME"));
    EXPECT_TRUE(dm_.VerificaExisteCampo("TPED", "B"));
    Executa("alter table TPED add C integer");
    dm_.SQLConnection1.Open();
    EXPECT_TRUE(dm_.VerificaExisteCampo("TPED", "C")) << "a new connect reads anew";
}

TEST_F(DataModuloTest, TablesAreReadTogetherOrOneByOneUntilASweepBringsTheOthers) {
    for (int i = 0; i < 20; ++i) Executa("create table T" + std::to_string(i) + " (A integer)");
    dm_.LeColunas({"T0", "T1", "TNADA"});
    dm_.SupoeColunas("T19", {});
    comandos_.clear();
    EXPECT_TRUE(dm_.VerificaExisteCampo("T1", "A"));
    EXPECT_TRUE(comandos_.empty());
    for (int i = 0; i < 19; ++i) EXPECT_TRUE(dm_.VerificaExisteCampo("T" + std::to_string(i), "A"));
    EXPECT_LT(comandos_.size(), 25u);
    EXPECT_FALSE(dm_.VerificaExisteCampo("T19", "A")) << "supposed to be without, a sweep notwithstanding";
}

TEST_F(DataModuloTest, ColumnsThatAreKnownOutliveAReconnect) {
    for (const char* tabela : {"T0", "T1", "T2"}) Executa(std::string("create table ") + tabela + " (A integer)");
    dm_.LeColunas({"T0", "T1", "T2"});
    Executa("alter table T1 add B integer");
    Executa("create table T3 (A integer)");
    dm_.Reconecta();
    EXPECT_TRUE(dm_.ExisteTabela("T3"));
    comandos_.clear();
    EXPECT_TRUE(dm_.VerificaExisteCampo("T2", "A"));
    EXPECT_FALSE(dm_.VerificaExisteCampo("T1", "B")) << "read with the others, before it was altered";
    EXPECT_TRUE(comandos_.empty());
    EXPECT_TRUE(dm_.VerificaExisteCampo("T3", "A"));
    dm_.EsqueceColunas("T1");
    EXPECT_TRUE(dm_.VerificaExisteCampo("T1", "B"));
}

TEST_F(DataModuloTest, AStatementHasRunOnlyWhenItsCommitSucceeded) {
    Executa("create table T (A integer)");
    Executa("insert into T values (1)");
    const struct {
        const char* sql;
        TFalha falha;
    } casos[] = {{"insert into NADA values (1)", TFalha::ObjetoInexistente},
                 {"alter tabel T add B integer", TFalha::Sintaxe},
                 {"alter table T add B integer not null", TFalha::Restricao}};
    for (const auto& caso : casos) {
        const TResultado resultado = dm_.Executa(caso.sql);
        ASSERT_FALSE(resultado) << caso.sql;
        EXPECT_EQ(resultado.Erro().Falha(), caso.falha) << resultado.Mensagem();
        EXPECT_FALSE(dm_.SQLConnection1.InTransaction());
        Executa("insert into T values (2)");
    }
    dm_.SQLConnection1.Open();
    EXPECT_EQ(Linhas("select count(*) from T"), "4");
}

TEST_F(DataModuloTest, AFailingCommitIsReportedAndNeverRaises) {
    dm_.SQLConnection1.Close();
    for (const char* alias : {"tbInterbase", "tbSQLServer", "tbODBC"}) {
        Fala(alias);
        dm_.Commit("TCLI");
        EXPECT_TRUE(tela_.memo1.empty()) << alias << " issues no statement";
    }
    Fala("tbOracle");
    dm_.Commit("TCLI");
    ASSERT_EQ(tela_.memo1.size(), 1u);
    EXPECT_TRUE(tela_.memo1[0].starts_with("Tabela: TCLI\rErro COMMIT - ")) << tela_.memo1[0];
    EXPECT_EQ(tela_.memo2, tela_.memo1);
    ASSERT_EQ(tela_.log.size(), 1u);
    EXPECT_EQ(tela_.log[0].mensagem, tela_.memo1[0]);
}

class DicionarioTest : public TDataModuloTest {
  protected:
    DicionarioTest() {
        Executa("create table SARQUIVO (COD_MODULO varchar(3), NOME_ARQUIVO varchar(50), VERSAO integer)");
        Executa("create table SATRIB (ARQUIVO varchar(50), NOME varchar(25), TAMANHO integer check (TAMANHO < 100))");
        for (const char* linha : {"'A', 'TCLI', 1", "'B', 'TCLI', 2", "'A', 'TPED', 3"})
            Executa("insert into SARQUIVO values (" + std::string(linha) + ")");
        for (const char* linha : {"'TCLI', 'NOME', 10", "'TPED', 'NOME', 20", "'TPED', 'CODIGO', 30"})
            Executa("insert into SATRIB values (" + std::string(linha) + ")");
        dm_.SArquivoNovo.Carrega({{{"COD_MODULO"}, {"NOME_ARQUIVO"}}, {{"A", "tped"}, {"B", "TCLI"}, {"A", "TNOVA"}}});
        dm_.SatribNovo.Carrega(
            {{{"ARQUIVO"}, {"NOME"}}, {{"TCLI", "NOME"}, {"TPED", "CODIGO"}, {"TPED", "NOME"}, {"TNOVA", "X"}}});
        dm_.SarquivoVelho.Open();
        dm_.SatribVelho.Open();
    }
};

TEST_F(DicionarioTest, StoredRowsFollowThePackageRow) {
    std::string visto;
    for (dm_.SArquivoNovo.First(); !dm_.SArquivoNovo.Eof(); dm_.SArquivoNovo.Next()) {
        visto += dm_.SarquivoVelho.Texto("VERSAO") + ":";
        for (dm_.SatribNovo.First(); !dm_.SatribNovo.Eof(); dm_.SatribNovo.Next())
            visto += dm_.SatribNovo.Texto("NOME") + "=" + dm_.SatribVelho.Texto("TAMANHO") + " ";
    }
    EXPECT_EQ(visto, "3:CODIGO=30 NOME=20 2:NOME=10 :X= ");
}

TEST_F(DicionarioTest, RowsOfSomeTablesAreReadWhateverColumnsSatribHasByThen) {
    dm_.SatribVelho.OpenVazio();
    Executa("alter table SATRIB add NOVO varchar(9) default 'x' not null");
    Executa("alter table SATRIB alter NOVO position 1");
    Executa("insert into SATRIB (ARQUIVO, NOME, TAMANHO) values ('tped', 'CODIGO2', 31)");
    dm_.SatribVelho.Recarrega("ARQUIVO", {"TPED", "tped"});
    dm_.SatribVelho.Recarrega("ARQUIVO", {"TPED", "tped"});
    EXPECT_EQ(dm_.SatribVelho.Todas().linhas.size(), 3u) << "each once, and none of TCLI";
    dm_.SArquivoNovo.First();
    dm_.SatribNovo.First();
    EXPECT_EQ(dm_.SatribVelho.Texto("TAMANHO"), "30");
    dm_.SatribVelho.Append();
    for (const auto& [campo, valor] : {std::pair("ARQUIVO", "TPED"), std::pair("NOME", "OUTRO")})
        dm_.SatribVelho.SetValor(campo, valor);
    dm_.SatribVelho.Post();
    EXPECT_TRUE(AplicaEmTransacao(dm_.SatribVelho)) << "the server gives what the dataset does not know";
    EXPECT_EQ(Linhas("select NOVO from SATRIB where NOME = 'OUTRO'"), "x");
}

TEST_F(DicionarioTest, TheKeysOfAllTablesAreReadAtOnce) {
    Executa("create table TCLI (A integer not null primary key)");
    Executa("create table TPED (A integer not null)");
    dm_.AtualizaListaDeTabelas();
    EXPECT_EQ(dm_.ChavePrimaria("tcli").colunas, std::vector<std::string>{"A"});
    comandos_.clear();
    EXPECT_TRUE(dm_.ChavePrimaria("TPED").colunas.empty());
    EXPECT_TRUE(comandos_.empty());
    Executa("alter table TPED add primary key (A)");
    dm_.EsqueceColunas("TPED");
    EXPECT_EQ(dm_.ChavePrimaria("TPED").colunas, std::vector<std::string>{"A"});
}

TEST_F(DicionarioTest, ChangesGoToTheRowOfTheKeyAndRefusalsAreShown) {
    dm_.SarquivoVelho.Edit();
    dm_.SarquivoVelho.SetValor("VERSAO", 9);
    dm_.SarquivoVelho.Post();
    EXPECT_TRUE(AplicaEmTransacao(dm_.SarquivoVelho));
    EXPECT_EQ(Linhas("select VERSAO from SARQUIVO order by 1"), "1;2;9");

    dm_.SatribVelho.Edit();
    dm_.SatribVelho.SetValor("TAMANHO", 500);
    dm_.SatribVelho.Post();
    EXPECT_FALSE(AplicaEmTransacao(dm_.SatribVelho));
    ASSERT_EQ(tela_.infos.size(), 1u);
    EXPECT_TRUE(tela_.infos[0].starts_with("SAtribVelho ")) << tela_.infos[0];
    EXPECT_EQ(Linhas("select TAMANHO from SATRIB order by 1"), "10;20;30");
}

}  // namespace
}  // namespace wkd
