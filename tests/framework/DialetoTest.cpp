#include "dialect/Dialeto.h"

#include <gtest/gtest.h>

#include "dialect/DialetoFirebird.h"

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

TEST(Dialeto, AFirebirdGetsStatementsInTheWordsOfItsVersion) {
    constexpr std::string_view kExige = "alter table TCLI alter NOME set not null";
    constexpr std::string_view kDispensa = "ALTER TABLE TCLI  alter NOME drop NOT NULL";
    constexpr std::string_view kPalavra = "select LOCAL, 'LOCAL' from TCLI";
    const struct {
        int versao;
        std::string_view antes, depois;
    } casos[] = {
        {205, kExige,
         "update rdb$relation_fields set rdb$null_flag = 1 where rdb$relation_name = 'TCLI' and rdb$field_name = "
         "'NOME'"},
        {205, kDispensa,
         "update rdb$relation_fields set rdb$null_flag = null where rdb$relation_name = 'TCLI' and rdb$field_name = "
         "'NOME'"},
        {205, "alter table TCLI alter NOME type varchar (9)", "alter table TCLI alter NOME type varchar (9)"},
        {205, kPalavra, kPalavra},
        {300, kExige, kExige},
        {300, kDispensa, kDispensa},
        {300, kPalavra, kPalavra},
        {0, kPalavra, kPalavra},
        {400, kExige, kExige},
        {400, kPalavra, "select \"LOCAL\", 'LOCAL' from TCLI"},
        {501, kPalavra, "select \"LOCAL\", 'LOCAL' from TCLI"},
    };
    for (const auto& caso : casos) {
        TDialetoFirebird dialeto;
        dialeto.Conhece({.versao = caso.versao});
        EXPECT_EQ(dialeto.ParaServidor(caso.antes), caso.depois) << caso.versao;
    }
}

TEST(Dialeto, CataloguesAreAskedForWhatTheirVersionHas) {
    for (const int versao : {205, 300, 500}) {
        TDialetoFirebird dialeto;
        dialeto.Conhece({.versao = versao});
        const bool tem = dialeto.ComandoConectados().find("mon$system_flag") != std::string_view::npos;
        EXPECT_EQ(tem, versao >= 300) << versao;
    }
}

TEST(Capacidades, VersionsAreReadFromWhatServersWrite) {
    const std::pair<std::string_view, int> casos[] = {{"3.0.11", 300},      {"2.5", 205}, {"13.00.5026", 1300},
                                                      {"10.50.1600", 1050}, {"5", 500},   {"", 0},
                                                      {"sem números", 0},   {"4.0.", 400}};
    for (const auto& [texto, numero] : casos) EXPECT_EQ(NumeroDaVersao(texto), numero) << texto;
    EXPECT_EQ(TextoDaVersao(EstruturaDoFirebird(205)), "11.2");
    EXPECT_EQ(TextoDaVersao(EstruturaDoFirebird(500)), "13.1");
    EXPECT_EQ(EstruturaDoFirebird(900), 0) << "not known yet";
}

TEST(Dialeto, OracleListsTablesByTheirInitial) {
    for (const char* nome : {"BCLIENTE", "cCLI", "SATRIB", "t"})
        EXPECT_TRUE(Dialeto(TTipoBanco::tbOracle).ListaTabela(nome)) << nome;
    for (const char* nome : {"XLOG", "AUX", "", " T"})
        EXPECT_FALSE(Dialeto(TTipoBanco::tbOracle).ListaTabela(nome)) << nome;
}

}  // namespace
}  // namespace wkd
