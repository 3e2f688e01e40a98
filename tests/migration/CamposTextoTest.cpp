#include "passes/CamposTexto.h"

#include "NovaApoio.h"

namespace wkd {
namespace {

struct TMorte {};

struct TBancoDeTextos : TBancoDaNova {
    TBancoDeTextos() {
        Guardada("TTXT", {{"CODIGO", "ftInteger", 0, 1},
                          {"LONGO", "ftString", 3000},
                          {"OUTRO", "ftString", 2000},
                          {"CURTO", "ftString", 1999},
                          {"FANTASMA", "ftString", 2500}});
        Executa(
            "create table TTXT (CODIGO integer not null, LONGO varchar(3000), OUTRO varchar(2000), CURTO varchar(1999),"
            " \"DATE\" integer default 7 not null, primary key (CODIGO, \"DATE\"))");
        Executa(
            "insert into TTXT (CODIGO, LONGO, OUTRO, CURTO) values (1, 'ç' || rpad('', 2499, 'ab'), 'outro', 'curto')");
        Executa("insert into TTXT (CODIGO, LONGO, OUTRO, CURTO) values (2, null, rpad('', 1998, 'y'), null)");
    }
    std::string Tudo() {
        std::string texto = Le("select NOME, TAMANHO from SATRIB order by SEQUENCIA") + "\n";
        for (const auto& coluna : Conexao().Colunas("TTXT")) texto += coluna.nome + " " + coluna.tipoSql + "\n";
        return texto + Le("select CODIGO, LONGO, OUTRO, CURTO from TTXT order by CODIGO");
    }
    void Ajusta() {
        dm_.AtualizaListaDeTabelas();
        AjustaCamposStringMaior2000(ctx_);
    }
};

TEST(CamposTextoTest, LongTextsAreCutOnceAndKept) {
    TBancoDeTextos banco;
    banco.Ajusta();
    std::string longo = "ç";
    for (int i = 0; i < 1997; ++i) longo += i % 2 ? 'b' : 'a';
    const std::string esperado =
        "CODIGO|0;LONGO|1988;OUTRO|1988;CURTO|1999;FANTASMA|2500\nCODIGO integer\nCURTO varchar(1999)\nDATE integer\n"
        "LONGO varchar(1998)\nOUTRO varchar(1998)\n1|" +
        longo + "|outro|curto;2|<null>|" + std::string(1998, 'y') + "|<null>";
    EXPECT_EQ(banco.Tudo(), esperado);
    const std::string rejeitados = banco.Rejeitados();
    EXPECT_EQ(std::ranges::count(rejeitados, '\n'), 1);
    EXPECT_NE(rejeitados.find("\"chave\": {\"CODIGO\": 1, \"DATE\": 7}"), std::string::npos);
    EXPECT_NE(rejeitados.find(longo + "ba"), std::string::npos);

    EXPECT_EQ(banco.tela_.memo2,
              std::vector<std::string>{"Tabela TTXT: 1 texto(s) da coluna LONGO cortado(s) em 1998 caracteres; "
                                       "inteiros, estão em AtualizaWKD.rejeitados.jsonl"});
    ASSERT_EQ(banco.tela_.log.size(), 1U);
    EXPECT_EQ(banco.tela_.log[0].tabela + " " + banco.tela_.log[0].acao, "TTXT AjustaCamposStringMaior2000");

    int alteracoes = 0;
    banco.Conexao().Observa([&](std::string_view sql) { alteracoes += sql.starts_with("alter"); });
    banco.Ajusta();
    EXPECT_EQ(alteracoes, 0);
}

TEST(CamposTextoTest, ADictionaryRowWhoseNameIsMoreThanANameRunsNothing) {
    TBancoDeTextos banco;
    banco.Executa("alter table TTXT add CAMPO_MIGRA_WKD varchar(1998)");
    banco.Executa("update SATRIB set NOME = 'X int, drop CURTO --' where NOME = 'FANTASMA'");
    banco.Ajusta();
    EXPECT_EQ(banco.Le("select CURTO from TTXT where CODIGO = 1"), "curto");
}

TEST(CamposTextoTest, AnInterruptedConversionIsFinishedByTheNextRun) {
    TBancoDeTextos inteiro;
    inteiro.Ajusta();
    int n = 1;
    for (bool chegou = true; chegou; ++n) {
        TBancoDeTextos banco;
        int executados = 0;
        banco.Conexao().Observa([&](std::string_view) {
            if (++executados >= n) throw TMorte();
        });
        try {
            banco.Ajusta();
        } catch (const TMorte&) {
        }
        banco.Conexao().Observa({});
        chegou = executados >= n;
        banco.Ajusta();
        ASSERT_TRUE(banco.Tudo() == inteiro.Tudo()) << "statement " << n << "\n" << banco.Tudo().substr(0, 200);
    }
    EXPECT_GT(n, 28);
}

TEST(CamposTextoTest, WhatIsEnteredInTheNewColumnStaysThere) {
    TBancoDeTextos banco;
    banco.Conexao().Observa([](std::string_view sql) {
        if (sql.starts_with("update  TTXT set  LONGO")) throw TMorte();
    });
    EXPECT_THROW(banco.Ajusta(), TMorte);
    banco.Conexao().Observa({});
    banco.Executa("insert into TTXT (CODIGO, LONGO) values (3, 'entrou')");
    banco.Executa("update TTXT set LONGO = 'mudou' where CODIGO = 2");
    banco.Ajusta();
    EXPECT_EQ(banco.Le("select CODIGO, substring(LONGO from 1 for 6), char_length(LONGO) from TTXT order by 1"),
              "1|çababa|1998;2|mudou|5;3|entrou|6");
}

TEST(CamposTextoTest, NobodyWritesATextBetweenItsCopyAndTheDropOfItsColumn) {
    TBancoDeTextos banco;
    bool escreveu = false;
    banco.Conexao().Observa([&](std::string_view sql) {
        if (escreveu || !sql.starts_with("alter table TTXT drop LONGO")) return;
        escreveu = true;  // it has to wait, and is told so
        EXPECT_THROW(banco.banco_.Outra()->ExecuteDirect("insert into TTXT (CODIGO, LONGO) values (3, 'a')"),
                     TErroBanco);
    });
    banco.Ajusta();
    EXPECT_TRUE(escreveu);
}

}  // namespace
}  // namespace wkd
