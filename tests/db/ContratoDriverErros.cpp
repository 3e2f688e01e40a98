#include "ContratoDriver.h"

namespace wkd {
namespace {

TEST_P(ContratoDriver, AnErrorTellsItsKindStateCodeTextAndStatement) {
    if (!Completo()) GTEST_SKIP() << "not of every server";
    Executa("create table T (A integer not null primary key, B varchar(3))");
    Executa("create index T_B on T (B)");
    Executa("insert into T values (1, 'a')");
    const struct {
        const char* sql;
        TFalha falha;
        const char* sqlstate;  // its beginning
    } casos[] = {
        {"select * from NADA", TFalha::ObjetoInexistente, "42S02"},
        {"drop table NADA", TFalha::ObjetoInexistente, "42S02"},
        {"alter table T drop constraint NADA", TFalha::ObjetoInexistente, "42"},
        {"update T set NADA = 1", TFalha::ColunaInexistente, "42S22"},
        {"create table T (A integer)", TFalha::ObjetoExistente, "42S01"},
        {"alter table T add B integer", TFalha::ObjetoExistente, ""},
        {"create index T_B on T (B)", TFalha::ObjetoExistente, "42S"},
        {"insert into T values (1, 'b')", TFalha::ChaveDuplicada, "23000"},
        {"insert into T (B) values ('b')", TFalha::Restricao, "23000"},
        {"selec * from T", TFalha::Sintaxe, "42000"},
        {"update T set B = 'abcd'", TFalha::Conversao, "22001"},
        {"insert into T values ('x', 'b')", TFalha::Conversao, "22"},
    };
    for (const auto& caso : casos) {
        SCOPED_TRACE(caso.sql);
        const auto erro = ErroDe([&] { Executa(caso.sql); });
        ASSERT_TRUE(erro);
        if (erro->CodigoNativo() != GetParam().codigoSemNumero) {
            EXPECT_EQ(erro->Falha(), caso.falha) << erro->SqlState() << " " << erro->what();
            EXPECT_EQ(erro->SqlState().rfind(caso.sqlstate, 0), 0u) << erro->SqlState();
        }
        EXPECT_NE(erro->CodigoNativo(), 0);
        EXPECT_EQ(erro->Comando(), caso.sql);
        EXPECT_FALSE(erro->ConexaoPerdida());
        EXPECT_GT(std::string(erro->what()).size(), 10u);
    }
    EXPECT_EQ(Linhas("select A, B from T"), "1|a");
}

TEST_P(ContratoDriver, AFaultFoundAtTheCommitBelongsToTheStatement) {
    if (!Completo()) GTEST_SKIP() << "not of every server";
    Executa("create table T (A integer)");
    Executa("insert into T values (1)");
    Executa("insert into T values (1)");
    const std::string sql = "create unique index T_A on T (A)";
    const auto erro = ErroDe([&] { Executa(sql); });
    ASSERT_TRUE(erro);
    EXPECT_EQ(erro->Falha(), TFalha::ChaveDuplicada);
    EXPECT_EQ(erro->Comando(), sql);
    EXPECT_TRUE(Conexao().Indices("T").empty());
}

TEST_P(ContratoDriver, AClosedConnectionFailsInsteadOfEndingTheProgram) {
    Executa("create table T (A integer)");
    auto comando = Conexao().Prepara("select A from T");
    comando->Abre();
    Conexao().Close();
    EXPECT_FALSE(Conexao().Connected());
    EXPECT_THROW(comando->Abre(), TErroBanco);
    EXPECT_THROW(Conexao().StartTransaction(), TErroBanco);
    Conexao().Open();
    Executa("insert into T values (7)");
    comando->Abre();
    ASSERT_TRUE(comando->Proximo());
    EXPECT_EQ(comando->Valor(0).ComoInteiro(), 7);
}

}  // namespace
}  // namespace wkd
