#include "tables/TB.h"

#include "TBApoio.h"

namespace wkd {
namespace {

/// The process ends here.
struct TMorte {};

class TBRecriaTest : public TBTest {
  protected:
    TBRecriaTest() {
        Dicionario("TCLI", {{"CODIGO", "ftInteger", "", "", "", 1},
                            {"NOME", "ftString", "30", "", "", 0},
                            {"FOTO", "ftBlob", "", "", "", 0},
                            {"UF", "ftString", "2", "sp", "", 0}});
        Indice("TCLI", "IX_NOME", 1, {"NOME"});
        Executa("insert into SARQUIVO values ('CAD', 'TCLI', 5)");
    }

    void TabelaVelha() {
        for (const char* tabela : {"TCLI", "BTCLI"})
            if (tb_.ExisteTabela(tabela)) Executa("drop table " + std::string(tabela));
        Executa("update SARQUIVO set VERSAO = 5");
        Executa("create table TCLI (FOTO blob, NOME varchar(10), SOBRA integer, CODIGO integer not null)");
        Executa("insert into TCLI values ('foto', 'ana', 9, 1)");
        Executa("insert into TCLI values (null, 'bia', null, 2)");
    }

    void SoABackup() {
        ASSERT_TRUE(tb_.CriaTabela("TCLI", true)) << tb_.Erro().mensagem;
        Executa("insert into BTCLI (CODIGO, NOME, FOTO, SOBRA) select CODIGO, NOME, FOTO, SOBRA from TCLI");
        Executa("drop table TCLI");
    }

    /// Whether the process ended at that statement.
    bool RecriaAteOComando(int n) {
        conexao_.Observa([&n](std::string_view) {
            if (--n == 0) throw TMorte();
        });
        bool morreu = false;
        try {
            EXPECT_TRUE(tb_.ReCriaTabela("TCLI")) << tb_.Erro().mensagem;
        } catch (const TMorte&) {
            morreu = true;
        }
        conexao_.Observa({});
        return morreu;
    }

    void ConfereNova() {
        EXPECT_EQ(Linhas("select CODIGO, NOME, FOTO from TCLI order by 1"), "1|ana|foto;2|bia|<null>");
        EXPECT_EQ(Estrutura("TCLI"), "CODIGO integer!, NOME varchar(30), FOTO blob sub_type 0, UF varchar(2)='SP'");
        EXPECT_EQ(Chave("TCLI"), "PK_TCLI(CODIGO)");
        EXPECT_EQ(Indices("TCLI"), "IX_NOME(NOME)!");
        EXPECT_EQ(Linhas("select CODIGO, SOBRA from BTCLI order by 1"), "1|9;2|<null>");
    }
};

TEST_F(TBRecriaTest, KeepsRowsAndVersionAndGivesLayoutKeyAndIndexes) {
    TabelaVelha();
    ASSERT_TRUE(tb_.ReCriaTabela("tcli")) << tb_.Erro().mensagem;
    ConfereNova();
    EXPECT_EQ(Linhas("select VERSAO from SARQUIVO"), "5");
}

TEST_F(TBRecriaTest, ChangesNothingWhenTheTableCouldNotBeCreatedOrSaved) {
    struct TCaso {
        const char *comando, *desfaz;
    };
    const TCaso casos[] = {
        {"update SATRIB set TIPO = 'ftEstranho' where NOME = 'UF'",
         "update SATRIB set TIPO = 'ftString' where NOME = 'UF'"},
        {"update SARQUIVO set NOME_ARQUIVO = 'TX'", "update SARQUIVO set NOME_ARQUIVO = 'TCLI'"},
        {"update SATRIB set CHAVE_DE_PESQUISA = 1 where NOME = 'FOTO'",
         "update SATRIB set CHAVE_DE_PESQUISA = 0 where NOME = 'FOTO'"},  // a key column without value in a row
    };
    TabelaVelha();
    for (const auto& [comando, desfaz] : casos) {
        Executa(comando);
        EXPECT_FALSE(tb_.ReCriaTabela("TCLI")) << comando;
        EXPECT_FALSE(tb_.Erro().mensagem.empty());
        Executa(desfaz);
        EXPECT_EQ(Linhas("select CODIGO, NOME, FOTO, SOBRA from TCLI order by 1"), "1|ana|foto|9;2|bia|<null>|<null>");
        EXPECT_EQ(Linhas("select VERSAO from SARQUIVO"), "5");
    }
}

TEST_F(TBRecriaTest, EndedAtAnyStatementTheNextCallFinishesWithAllRows) {
    for (const bool perdida : {false, true}) {
        int n = 0;
        for (bool morreu = true; morreu;) {
            SCOPED_TRACE((perdida ? "lost table, statement " : "statement ") + std::to_string(++n));
            TabelaVelha();
            if (perdida) SoABackup();
            morreu = RecriaAteOComando(n);
            if (morreu) {
                ASSERT_TRUE(tb_.ReCriaTabela("TCLI")) << tb_.Erro().mensagem;
            }
            ConfereNova();
        }
        EXPECT_GT(n, 20);
    }
}

TEST_F(TBRecriaTest, RowsEnteredSinceAnInterruptedRebuildAreKept) {
    TabelaVelha();
    conexao_.Observa([](std::string_view comando) {
        if (comando.starts_with("drop table TCLI")) throw TMorte();
    });
    EXPECT_THROW((void)tb_.ReCriaTabela("TCLI"), TMorte);
    conexao_.Observa({});
    Executa("insert into TCLI (CODIGO, NOME) values (3, 'eva')");
    ASSERT_TRUE(tb_.ReCriaTabela("TCLI")) << tb_.Erro().mensagem;
    EXPECT_EQ(Linhas("select CODIGO, NOME from TCLI order by 1"), "1|ana;2|bia;3|eva");
}

TEST_F(TBRecriaTest, WorkSinceARebuildThatEndedBehindTheRestoreIsKept) {
    TabelaVelha();
    conexao_.Observa([](std::string_view comando) {
        if (comando.find("IX_NOME") != std::string_view::npos) throw TMorte();
    });
    EXPECT_THROW((void)tb_.ReCriaTabela("TCLI"), TMorte);
    conexao_.Observa({});
    Executa("update TCLI set NOME = 'ana maria', FOTO = null where CODIGO = 1");
    Executa("insert into TCLI (CODIGO, NOME) values (3, 'eva')");
    ASSERT_TRUE(tb_.ReCriaTabela("TCLI")) << tb_.Erro().mensagem;
    EXPECT_EQ(Linhas("select CODIGO, NOME, FOTO from TCLI order by 1"), "1|ana maria|<null>;2|bia|<null>;3|eva|<null>");
    EXPECT_EQ(Linhas("select CODIGO, SOBRA from BTCLI order by 1"), "1|9;2|<null>;3|<null>");
}

}  // namespace
}  // namespace wkd
