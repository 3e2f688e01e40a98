#include "tables/TB.h"

#include "TBApoio.h"

namespace wkd {
namespace {

TEST_F(TBTest, APrimaryKeyComesWithNotNullAndOnlyWhereTheRowsAllowIt) {
    struct TCaso {
        std::vector<const char*> linhas;  // of (A, B)
        const char* erro;                 // empty: the key is made
    };
    const TCaso casos[] = {
        {{"1, 1", "1, 2"}, ""},
        {{}, ""},
        {{"1, null", "2, 3"}, "A coluna B da chave de TX está sem valor em 1 registro(s)"},
        {{"1, 1", "1, 1", "2, 5", "2, 5", "2, 5", "3, 1"}, "A chave A,B de TX tem 2 valores repetidos"},
    };
    Dicionario(
        "tx",
        {{"B", "ftInteger", "", "", "", 0}, {"A", "ftInteger", "", "", "", 1}, {"B", "ftInteger", "", "", "", 1}});
    for (const auto& [linhas, erro] : casos) {
        Executa("recreate table TX (A integer not null, B integer)");
        for (const std::string linha : linhas) Executa("insert into TX values (" + linha + ")");
        EXPECT_EQ(tb_.CriaIndicePrimario("TX", false), *erro == 0) << erro;
        EXPECT_EQ(tb_.Erro().mensagem, erro);
        EXPECT_EQ(Chave("TX"), *erro ? "" : "PK_TX(A,B)");
        EXPECT_EQ(Estrutura("TX"), *erro ? "A integer!, B integer" : "A integer!, B integer!");
        EXPECT_EQ(tb_.CriaIndicePrimario("TX", false), *erro == 0) << "again";
    }
    Executa("create table TSEM (A integer)");
    EXPECT_FALSE(tb_.CriaIndicePrimario("TSEM", false));
    EXPECT_NE(tb_.Erro().mensagem.find("TSEM"), std::string::npos);
}

TEST_F(TBTest, SecondaryIndexesAreMadeOneByOneWhateverFails) {
    Executa("create table TX (A integer, B integer, C varchar(10), D integer)");
    Executa("create index IX_VELHO on TX (C)");
    for (const char* linha : {"1, 1, 'a', null", "1, 2, 'b', null", "2, 3, 'c', 1", "2, 4, 'd', 2"})
        Executa("insert into TX values (" + std::string(linha) + ")");
    Indice("TX", "IX_REPETIDO", 1, {"A"});
    Indice("TX", "IX_FALTA", 0, {"NAOEXISTE"});
    Indice("TX", "IX_VAZIO", 0, {});
    Indice("TX", "IX_VELHO", 0, {"A"});
    Indice("TX", "IX_NULOS", 1, {"D"});
    Indice("TX", "IX_DOIS", 1, {"A", "B"});
    Indice("TX", "IX_SIMPLES", 0, {"B", "A"});

    EXPECT_FALSE(tb_.CriaIndiceSecundarios("TX"));
    const std::string erro = tb_.Erro().mensagem;
    for (const char* parte : {"Erro criando indice secundario UNIQUE IX_REPETIDO do arquivo:TX 2 valores repetidos",
                              "Erro criando indice secundario IX_FALTA do arquivo:TX ",
                              "Erro criando indice secundario IX_VAZIO do arquivo:TX sem colunas"})
        EXPECT_NE(erro.find(parte), std::string::npos) << erro;
    EXPECT_EQ(Indices("TX"), "IX_DOIS(A,B)! IX_NULOS(D)! IX_SIMPLES(B,A) IX_VELHO(C)");

    Executa("drop table SINDSEC");
    EXPECT_FALSE(tb_.CriaIndiceSecundarios("TX"));
}

TEST_F(TBTest, WhatIsReadOnceTellsTheSameOfEveryTable) {
    Dicionario("TX", {{"A", "ftInteger", "", "", "", 1}, {"VAZIO", "", "", "", "", 0}});
    Dicionario("ty", {{"B", "ftInteger", "", "", "", 1}});
    Dicionario("Tz", {{"C", "ftInteger", "", "", "", 1}});
    Dicionario("TZ", {{"D", "ftInteger", "", "", "", 0}});
    Indice("TX", "IX", 1, {"B", "A"});
    Indice("tx", "IX_OUTRA", 0, {"A"});
    Indice("TY", "IY", 0, {"B"});
    Indice("Tz", "IZ", 0, {});
    const auto conta = [this](const std::string& tabela) {
        std::string texto = tabela + ":";
        for (const auto& coluna : tb_.ColunasDoDicionario(tabela)) texto += " " + coluna.nome;
        texto += " (" + Junta(tb_.ColunasDaChave(tabela), ",") + ")";
        for (const auto& indice : tb_.Dicionario().Indices(tabela))
            texto += " " + indice.nome + (indice.unico ? "!" : "") + "(" +
                     Junta(tb_.Dicionario().ColunasDoIndice(tabela, indice.nome), ",") + ")";
        return texto;
    };
    std::vector<std::string> umaAUma;
    for (const char* tabela : {"TX", "tx", "TY", "TZ", "TNENHUMA"}) umaAUma.push_back(conta(tabela));
    EXPECT_EQ(umaAUma.front(), "TX: A VAZIO (A) IX!(B,A)");
    EXPECT_EQ(umaAUma[3], "TZ: C D (C)");

    const auto memoria = tb_.Dicionario().Lembra();
    for (const std::string& esperado : umaAUma) EXPECT_EQ(conta(esperado.substr(0, esperado.find(':'))), esperado);
    Dicionario("tx", {{"NOVA", "ftInteger", "", "", "", 0}});
    tb_.Dicionario().Anota("tx");
    EXPECT_EQ(conta("TX"), "TX: A VAZIO NOVA (A) IX!(B,A)");

    Executa("create index IX_SATRIB on SATRIB (ARQUIVO)");
    Executa("alter table SATRIB add AUT_ integer");
    EXPECT_EQ(conta("TY"), umaAUma[2]);
    tb_.Dicionario().Solta();
    Executa("drop index IX_SATRIB");

    Executa("delete from SINDSEC");
    EXPECT_EQ(conta("TY"), umaAUma[2]);
    conta("SINDSEC");
    EXPECT_EQ(conta("TY"), "TY: B (B)") << "what works on the tables of the indexes changes them";
}

TEST_F(TBTest, DroppingIndexesLeavesThoseOfConstraints) {
    Executa("create table TPAI (A integer not null, B integer, C integer unique, constraint PK_TPAI primary key (A))");
    Executa("create index IX_B on TPAI (B)");
    Executa("create descending index \"ix b\" on TPAI (B, C)");
    Executa("create table TFILHO (A integer references TPAI)");

    tb_.ApagaInidices("TPAI", false);
    ASSERT_EQ(conexao_.Indices("TPAI").size(), 1U);
    EXPECT_FALSE(conexao_.Indices("TPAI").front().restricao.empty());
    EXPECT_TRUE(tb_.ExisteIndicePrimario("tpai"));

    try {
        tb_.ApagaInidices("TPAI", true);
        FAIL() << "the key is referenced";
    } catch (const TErroBanco& erro) {
        EXPECT_NE(std::string(erro.what()).find("PK_TPAI"), std::string::npos) << erro.what();
    }
    Executa("drop table TFILHO");
    tb_.ApagaInidices("TPAI", true);
    EXPECT_FALSE(tb_.ExisteIndicePrimario("TPAI"));
    EXPECT_NO_THROW(tb_.ApagaInidices("TPAI", true));
}

}  // namespace
}  // namespace wkd
