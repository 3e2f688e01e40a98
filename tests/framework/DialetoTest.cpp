#include "dialect/Dialeto.h"

#include <gtest/gtest.h>

namespace wkd {
namespace {

TEST(Dialeto, RowLimitChangesOnlyBetweenBlanks) {
    const struct {
        TTipoBanco banco;
        const char *antes, *depois;
    } casos[] = {
        {TTipoBanco::tbInterbase, "select TOP 1 TOP 2 x", "select FIRST 1 FIRST 2 x"},
        {TTipoBanco::tbSQLServer, "select FIRST 1 x", "select TOP 1 x"},
        {TTipoBanco::tbSQLServer, "FIRST 1 FIRST\nx", "FIRST 1 FIRST\nx"},
        {TTipoBanco::tbInterbase, "select top 1 STOP TOPO x", "select top 1 STOP TOPO x"},
        {TTipoBanco::tbODBC, "select FIRST TOP x", "select FIRST TOP x"},
    };
    for (const auto& caso : casos) EXPECT_EQ(Dialeto(caso.banco).AjustaQuery(caso.antes), caso.depois);
}

TEST(Dialeto, EveryKindHasItsTexts) {
    const struct {
        TTipoBanco banco;
        const char *altera, *commit, *rollback, *cria;
    } casos[] = {
        {TTipoBanco::tbInterbase, " alter X type ", "commit;", "ROLLBACK;", "(A BLOB, B TIMESTAMP)"},
        {TTipoBanco::tbMySQL, " modify  X", "commit;", "ROLLBACK;", "(A BLOB, B TIMESTAMP)"},
        {TTipoBanco::tbOracle, " modify  X", "commit", "ROLLBACK", "(A BLOB, B TIMESTAMP)"},
        {TTipoBanco::tbSQLServer, " alter COLUMN X", "", "", "(A IMAGE, B datetime)"},
        {TTipoBanco::tbODBC, "", "", "", "(A BLOB, B TIMESTAMP)"},
    };
    for (const auto& caso : casos) {
        EXPECT_EQ(Dialeto(caso.banco).ChaveAlteraColuna("X"), caso.altera);
        EXPECT_EQ(Dialeto(caso.banco).ComandoCommit(), caso.commit);
        EXPECT_EQ(Dialeto(caso.banco).ComandoRollback(), caso.rollback);
        EXPECT_EQ(Dialeto(caso.banco).AjustaCriaTabela("(A BLOB, B TIMESTAMP)"), caso.cria);
    }
}

TEST(Dialeto, OracleListsTablesByTheirInitial) {
    for (const char* nome : {"BCLIENTE", "cCLI", "SATRIB", "t"})
        EXPECT_TRUE(Dialeto(TTipoBanco::tbOracle).ListaTabela(nome)) << nome;
    for (const char* nome : {"XLOG", "AUX", "", " T"})
        EXPECT_FALSE(Dialeto(TTipoBanco::tbOracle).ListaTabela(nome)) << nome;
}

}  // namespace
}  // namespace wkd
