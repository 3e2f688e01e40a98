#include "layout/Tini.h"

#include <gtest/gtest.h>

#include "BancoTemporario.h"
#include "rows/WKDQuery.h"

namespace wkd {
namespace {

TEST(Tini, KeepsOneValueForEverySectionAndKey) {
    TBancoTemporario banco;
    TConnection& conexao = banco.Conexao();
    conexao.ExecuteDirect("create table TINI (SESSAO varchar(50), CHAVE varchar(50), VALOR varchar(200))");
    EXPECT_EQ(LeParametro("HBN4", "LOOKUPFISICO", "NAO", &conexao), "NAO");

    GravaParametro("HBN4", "LOOKUPFISICO", "SIM", &conexao);
    GravaParametro("HBN4", "D'Água", "não", &conexao);
    GravaParametro("HBN3", "LOOKUPFISICO", "outra", &conexao);
    GravaParametro("HBN4", "LOOKUPFISICO", "TALVEZ", &conexao);
    GravaParametro("HBN4", "VAZIA", "", &conexao);

    EXPECT_EQ(LeParametro("HBN4", "LOOKUPFISICO", "NAO", &conexao), "TALVEZ");
    EXPECT_EQ(LeParametro("HBN3", "LOOKUPFISICO", "NAO", &conexao), "outra");
    EXPECT_EQ(LeParametro("HBN4", "D'Água", "", &conexao), "não");
    EXPECT_EQ(LeParametro("HBN4", "VAZIA", "padrão", &conexao), "padrão");
    EXPECT_EQ(ContaRegistros(conexao, "select count(*) from TINI"), 4);
}

TEST(Tini, WithoutConnectionNothingIsReadOrWritten) {
    GravaParametro("HBN4", "X", "SIM", nullptr);
    EXPECT_EQ(LeParametro("HBN4", "X", "NAO", nullptr), "");
}

}  // namespace
}  // namespace wkd
