#include <gtest/gtest.h>

#include <cstdlib>

#include "BancoTemporario.h"

namespace wkd {
namespace {

/// What came with Firebird 4; see scripts/firebird4.sh.
class Firebird4 : public testing::Test {
  protected:
    void SetUp() override {
        if (std::getenv("WKD_FIREBIRD4") == nullptr) GTEST_SKIP() << "no Firebird 4 server: WKD_FIREBIRD4 is not set";
        banco_ = std::make_unique<TBancoTemporario>();
    }

    TConnection& Conexao() { return banco_->Conexao(); }

    std::unique_ptr<TBancoTemporario> banco_;
};

struct TTipoNovo {
    const char *tipo, *valor;
    TTipoDado dado;
};

constexpr TTipoNovo kTipos[] = {
    {"int128", "-170141183460469231731687303715884105728", TTipoDado::Decimal},
    {"numeric(38,4)", "1234567890123456789012345678901234.5678", TTipoDado::Decimal},
    {"decfloat(16)", "-1.234567890123456E-370", TTipoDado::Flutuante},
    {"decfloat(34)", "1.234567890123456789012345678901234E+6100", TTipoDado::Flutuante},
    {"time with time zone", "23:59:59.9999 America/Sao_Paulo", TTipoDado::Hora},
    {"timestamp with time zone", "2024-02-29 13:05:09.0070 -03:00", TTipoDado::DataHora},
};

TEST_F(Firebird4, ItsTypesAreKnownAndTheirValuesComeAndGoWhole) {
    for (const auto& caso : kTipos) {
        SCOPED_TRACE(caso.tipo);
        Conexao().ExecuteDirect("recreate table T (C " + std::string(caso.tipo) + ")");
        const auto colunas = Conexao().Colunas("T");
        ASSERT_EQ(colunas.size(), 1u);
        EXPECT_EQ(colunas[0].tipoSql, caso.tipo);
        EXPECT_EQ(colunas[0].tipo, caso.dado);

        auto comando = Conexao().Prepara("insert into T (C) values (:pC)");
        Conexao().StartTransaction();
        comando->Atribui("pC", std::string(caso.valor));
        comando->Executa();
        Conexao().Commit();
        const auto lido = Conexao().Prepara("select C, cast(C as varchar(64)) from T");
        lido->Abre();
        ASSERT_TRUE(lido->Proximo());
        EXPECT_EQ(lido->Valor(0).ComoTexto(), caso.valor);
        EXPECT_EQ(lido->Valor(1).ComoTexto(), caso.valor) << "as the server has it";
    }
}

TEST_F(Firebird4, SumsOfWholeNumbersAndLongNamesAreRead) {
    const std::string nome(63, 'N');
    Conexao().ExecuteDirect("create table T" + nome.substr(1) + " (" + nome + " bigint, CODIGO integer)");
    Conexao().ExecuteDirect("insert into T" + nome.substr(1) + " values (9223372036854775807, 1)");
    const auto lido =
        Conexao().Prepara("select " + nome + ", sum(" + nome + " + 0) from T" + nome.substr(1) + " group by 1");
    EXPECT_EQ(lido->Campos().at(0).nome, nome);
    lido->Abre();
    ASSERT_TRUE(lido->Proximo());
    EXPECT_EQ(lido->Valor(0).ComoInteiro(), 9223372036854775807);
    EXPECT_EQ(lido->Valor(1).ComoTexto(), "9223372036854775807");
    EXPECT_EQ(Conexao().Colunas("T" + nome.substr(1)).at(0).nome, nome);
}

TEST_F(Firebird4, ItsNewWordsStayNamesOfTablesAndColumns) {
    Conexao().ExecuteDirect("create table Window (LOCAL varchar(10) default 'LOCAL' not null, primary key (local))");
    Conexao().ExecuteDirect("insert into WINDOW (LOCAL) values ('LOCAL')");
    Conexao().ExecuteDirect("alter table WINDOW add WITHOUT integer");
    const auto lido = Conexao().Prepara("select w.LOCAL, WITHOUT from WINDOW w where /* LOCAL */ local = :LOCAL");
    lido->Atribui("LOCAL", std::string("LOCAL"));
    lido->Abre();
    ASSERT_TRUE(lido->Proximo());
    EXPECT_EQ(lido->Valor(0).ComoTexto(), "LOCAL");
    EXPECT_TRUE(Conexao().ExisteTabela("WINDOW"));
}

}  // namespace
}  // namespace wkd
