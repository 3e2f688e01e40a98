#include "rows/ClientDataSet.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "values/Erros.h"

namespace wkd {
namespace {

TTabelaEmMemoria Tabela(const std::vector<std::string>& nomes, std::vector<TLinha> linhas) {
    TTabelaEmMemoria tabela;
    for (const std::string& nome : nomes) tabela.campos.push_back({.nome = nome});
    tabela.linhas = std::move(linhas);
    return tabela;
}

/// Values of a field over the visible rows.
std::string Lista(TClientDataSet& dados, std::string_view campo) {
    std::string lista;
    for (dados.First(); !dados.Eof(); dados.Next()) lista += (lista.empty() ? "" : " ") + dados.Texto(campo);
    return lista;
}

/// Tables, their columns as packed, and the stored columns: three levels of master and detail.
class ClientDataSet : public testing::Test {
  protected:
    ClientDataSet() {
        tabelas.Carrega(Tabela({"COD_MODULO", "NOME_ARQUIVO"}, {{"M1", "TCLI"}, {"M1", "TPED"}, {"M2", "TVAZ"}}));
        novas.Carrega(Tabela({"ARQUIVO", "NOME", "CHAVE_DE_PESQUISA"}, {{"TPED", "NUM", 1},
                                                                        {"tcli ", "COD", 1},
                                                                        {"TPED", "VALOR", 0},
                                                                        {"TCLI", "NOME", TValor()},
                                                                        {"TPED", "COD", 1}}));
        velhas.Carrega(Tabela({"ARQUIVO", "NOME", "TIPO"},
                              {{"TCLI", "COD", "ftInteger"}, {"TPED", "num", "ftFloat"}, {"TPED", "cod", "ftString"}}));
        novas.SetIndexFieldNames("ARQUIVO");
        novas.SetMaster(&tabelas, "NOME_ARQUIVO");
        velhas.SetIndexFieldNames("ARQUIVO;NOME");
        velhas.SetMaster(&novas, "ARQUIVO;NOME");
    }

    TClientDataSet tabelas, novas, velhas;
};

TEST_F(ClientDataSet, TheDetailFollowsItsMasterOnThreeLevelsInRowOrder) {
    EXPECT_EQ(Lista(novas, "NOME"), "COD NOME");
    tabelas.Next();
    EXPECT_EQ(novas.Texto("NOME"), "NUM") << "o cursor vai à primeira linha quando o mestre anda";
    EXPECT_EQ(velhas.Texto("TIPO"), "ftFloat");
    novas.Next();
    EXPECT_TRUE(velhas.IsEmpty());
    EXPECT_TRUE(velhas.Valor("TIPO").Nulo());
    novas.Next();
    EXPECT_EQ(velhas.Texto("TIPO"), "ftString");
    tabelas.First();
    EXPECT_EQ(velhas.Texto("TIPO"), "ftInteger") << "o neto segue o mestre do seu mestre";
    tabelas.Last();
    EXPECT_TRUE(novas.IsEmpty());
    EXPECT_TRUE(velhas.IsEmpty());
}

TEST_F(ClientDataSet, AChangeOfTheMasterChangesTheDetail) {
    tabelas.Edit();
    tabelas.SetValor("NOME_ARQUIVO", "tped");
    EXPECT_EQ(novas.RecordCount(), 2u) << "ainda não gravada";
    tabelas.Post();
    EXPECT_EQ(novas.RecordCount(), 3u);
    tabelas.Delete();
    EXPECT_EQ(tabelas.Texto("NOME_ARQUIVO"), "TPED");
    tabelas.CancelUpdates();
    EXPECT_EQ(tabelas.Texto("NOME_ARQUIVO"), "TPED") << "o cursor fica na sua linha";
    tabelas.First();
    EXPECT_EQ(Lista(novas, "NOME"), "COD NOME");
}

TEST_F(ClientDataSet, LinkAndFilterChangeWhileTheDatasetIsOpen) {
    tabelas.Next();
    novas.SetFilter("chave_de_pesquisa", {1});
    novas.SetFiltered(true);
    EXPECT_EQ(Lista(novas, "NOME"), "NUM COD");
    velhas.SetMaster(nullptr, "");
    velhas.SetFilter("ARQUIVO", {"tped"});
    velhas.SetFiltered(true);
    EXPECT_EQ(Lista(velhas, "NOME"), "cod num") << "sem mestre vale a ordem do índice";
    velhas.First();
    while (!velhas.IsEmpty()) velhas.Delete();
    EXPECT_EQ(velhas.ChangeCount(), 2u);
    velhas.SetFiltered(false);
    EXPECT_EQ(Lista(velhas, "ARQUIVO"), "TCLI");
    velhas.SetMaster(&novas, "ARQUIVO;NOME");
    novas.First();
    EXPECT_TRUE(velhas.IsEmpty());
    velhas.CancelUpdates();
    EXPECT_EQ(velhas.Texto("TIPO"), "ftFloat");
}

TEST_F(ClientDataSet, ARowAddedToTheDetailShowsWhereTheConditionHolds) {
    novas.Next();
    ASSERT_TRUE(velhas.IsEmpty());
    velhas.Append();
    for (const char* campo : {"ARQUIVO", "NOME"}) velhas.SetValor(campo, novas.Valor(campo));
    velhas.Post();
    EXPECT_EQ(velhas.RecordCount(), 1u);
    velhas.Append();
    velhas.SetValor("ARQUIVO", "OUTRO");
    velhas.Post();
    EXPECT_EQ(velhas.RecordCount(), 1u);
    EXPECT_TRUE(velhas.Existe("arquivo", {"outro"}));
    velhas.Edit();
    velhas.SetValor("NOME", "MUDOU");
    velhas.Post();
    EXPECT_TRUE(velhas.IsEmpty()) << "a linha deixou o elo";
    EXPECT_TRUE(velhas.Existe("NOME;ARQUIVO", {"MUDOU", "TCLI"}));
    EXPECT_FALSE(velhas.Existe("NOME;ARQUIVO", {"NOME", "TCLI"}));
}

TEST(ClientDataSetFiltro, ShowsTheRowsWithOneOfTheValues) {
    const struct {
        const char* campo;
        TLinha valores;
        const char* linhas;
    } casos[] = {
        {"", {}, "1 2 3 4"},
        {"nome_arquivo", {}, "1 2 3 4"},
        {"nome_arquivo", {"tcli"}, "1 2"},
        {"n", {3, 1}, "1 3"},
        {"NOME_ARQUIVO", {"D'ÁGUA", "Tcli  "}, "1 2 3"},
        {"nome_arquivo", {""}, ""},
        {"n", {9}, ""},
    };
    TTabelaEmMemoria tabela = Tabela({"N", "NOME_ARQUIVO"}, {{1, "TCLI"}, {2, "tcli "}, {3, "d'ÁGUA"}, {4, TValor()}});
    tabela.campos[0].tipo = TTipoDado::Inteiro;
    TClientDataSet dados;
    dados.Carrega(std::move(tabela));
    dados.SetFiltered(true);
    for (const auto& caso : casos) {
        dados.SetFilter(caso.campo, caso.valores);
        EXPECT_EQ(Lista(dados, "N"), caso.linhas) << caso.campo;
    }
    dados.SetFilter("B", {"x"});
    EXPECT_THROW(dados.First(), std::invalid_argument);
}

TEST(ClientDataSetCursor, ADeletionLeavesTheCursorOnTheNextRow) {
    TClientDataSet dados;
    dados.Carrega(Tabela({"A"}, {{"1"}, {"2"}, {"3"}, {"4"}}));
    std::string vistas;
    for (dados.First(); !dados.Eof();) {
        vistas += dados.Texto("A");
        if (dados.Texto("A") == "2" || dados.Texto("A") == "4")
            dados.Delete();
        else
            dados.Next();
    }
    EXPECT_EQ(vistas, "1234");
    EXPECT_EQ(Lista(dados, "A"), "1 3");
    EXPECT_TRUE(dados.Locate("A", {"3"}));
    EXPECT_FALSE(dados.Locate("A", {"4"}));
    EXPECT_EQ(dados.Texto("A"), "3") << "sem achar, o cursor fica";
    EXPECT_THROW(dados.Valor("B"), std::invalid_argument);
}

TEST(ClientDataSetCursor, TheIndexOrderHoldsForNewAndChangedRows) {
    TClientDataSet dados;
    dados.SetIndexFieldNames("A");
    dados.Carrega(Tabela({"A", "B"}, {{"d", "1"}, {"b", "2"}, {"D", "3"}}));
    EXPECT_EQ(Lista(dados, "B"), "2 1 3");
    dados.Append();
    dados.SetValor("A", "c");
    dados.SetValor("B", "4");
    dados.Post();
    EXPECT_EQ(dados.Texto("B"), "4");
    EXPECT_EQ(Lista(dados, "B"), "2 4 1 3");
    ASSERT_TRUE(dados.Locate("A", {"D "}));
    EXPECT_EQ(dados.Texto("B"), "1");
    dados.Edit();
    dados.SetValor("A", "a");
    dados.Post();
    EXPECT_EQ(dados.Texto("B"), "1") << "o cursor acompanha a linha";
    EXPECT_EQ(Lista(dados, "B"), "1 2 4 3");
}

TEST(ClientDataSetEdicao, ConvertsRefusesAndGivesUp) {
    TTabelaEmMemoria tabela = Tabela({"N", "T"}, {{1, "a"}});
    tabela.campos[0].tipo = TTipoDado::Inteiro;
    tabela.campos[0].requerido = true;
    TClientDataSet dados;
    dados.Carrega(std::move(tabela));
    dados.Edit();
    dados.SetValor("n", " 7 ");
    EXPECT_TRUE(dados.Valor("N") == TValor(7));
    EXPECT_THROW(dados.SetValor("N", "sete"), TErroConversao);
    EXPECT_THROW(dados.SetValor("X", 1), std::invalid_argument);
    dados.Cancel();
    EXPECT_EQ(dados.Inteiro("N"), 1);
    EXPECT_EQ(dados.ChangeCount(), 0u);
    dados.Append();
    EXPECT_THROW(dados.Post(), TErroBanco) << "campo requerido nulo";
    dados.First();
    EXPECT_EQ(dados.RecordCount(), 1u);
    EXPECT_THROW(dados.SetValor("N", 2), std::logic_error) << "a inclusão foi abandonada";
    dados.Close();
    EXPECT_TRUE(dados.IsEmpty());
    EXPECT_THROW(dados.Edit(), std::logic_error);
}

}  // namespace
}  // namespace wkd
