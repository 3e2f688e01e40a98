// One update over tables that do not let themselves be rebuilt just so: each is reported, keeps its rows, and the run
// goes on to the next.
#include <gtest/gtest.h>

#include <vector>

#include "Linhas.h"
#include "OpcoesDeTeste.h"
#include "QuedaApoio.h"
#include "TelaDeTeste.h"
#include "run/Atualizacao.h"
#include "values/Texto.h"

namespace wkd {
namespace {

struct TCasoDificil {
    const char* tabela;
    std::vector<const char*> criacao;
    int chave;          // whether the dictionary gives CODIGO as key
    const char* aviso;  // part of a line of Memo2; empty: the table is not named there
    const char *consulta, *linhas;
    int versao;  // afterwards; -1: it waits for the next run
};

const std::vector<TCasoDificil>& Casos() {
    static const std::vector<TCasoDificil> casos = {
        {"TFKS",
         {"create table TPAI (CODIGO integer not null primary key, NOME varchar(20))",
          "insert into TPAI values (1, 'pai')",
          "create table TFKS (CODIGO integer not null primary key, NOME varchar(20), PAI integer,"
          " constraint FK_TFKS foreign key (PAI) references TPAI)",
          "insert into TFKS values (1, 'filho', 1)"},
         1,
         "Tabela TFKS: alter table TFKS add constraint FK_TFKS foreign key (PAI) references TPAI (CODIGO): ",
         "select CODIGO, NOME from TFKS",
         "1|filho",
         2},
        {"TPAI",
         {"create table TFILHO (CODIGO integer, constraint FK_TFILHO foreign key (CODIGO) references TPAI)",
          "insert into TFILHO values (1)"},
         1,
         "chave estrangeira FK_TFILHO de TFILHO",
         "select p.NOME from TFILHO f join TPAI p on p.CODIGO = f.CODIGO",
         "pai",
         -1},
        {"TCIA",
         {"create table TCIA (CODIGO integer not null primary key, NOME varchar(20))",
          "create table TCIB (CODIGO integer not null primary key, NOME varchar(20),"
          " constraint FK_TCIB foreign key (CODIGO) references TCIA)",
          "insert into TCIA values (1, 'a')", "insert into TCIB values (1, 'b')",
          "alter table TCIA add constraint FK_TCIA foreign key (CODIGO) references TCIB"},
         1,
         "chave estrangeira FK_TCIB de TCIB",
         "select CODIGO, NOME from TCIA",
         "1|a",
         -1},
        {"TCIB", {}, 1, "chave estrangeira FK_TCIA de TCIA", "select CODIGO, NOME from TCIB", "1|b", -1},
        {"TDUP",
         {"create table TDUP (CODIGO integer, NOME varchar(20))", "insert into TDUP values (1, 'a')",
          "insert into TDUP values (1, 'b')", "insert into TDUP values (2, 'c')"},
         1,
         "***** TABELA TDUP Nº de registros antes: 3 Nº de registros depois: 2",
         "select CODIGO, NOME from TDUP union all select CODIGO, NOME from BTDUP",
         "1|a;2|c;1|a;1|b;2|c",
         2},
        {"TNUL",
         {"create table TNUL (CODIGO integer, NOME varchar(20))", "insert into TNUL values (null, 'a')",
          "insert into TNUL values (2, 'c')"},
         1,
         "",
         "select CODIGO, NOME from TNUL",
         "0|a;2|c",
         2},
        {"TSEM",
         {"create table TSEM (CODIGO integer, NOME varchar(20))", "insert into TSEM values (1, 'a')",
          "insert into TSEM values (1, 'a')", "insert into TSEM values (null, null)"},
         0,
         "Tabela: TSEM NÃO POSSUI INDICE PRIMARIO",
         "select CODIGO, NOME from TSEM",
         "1|a;1|a;<null>|<null>",
         2},
        {"TMAO",
         {"create table TMAO (CODIGO integer not null primary key, NOME varchar(20), A_MAO blob sub_type 1)",
          "insert into TMAO values (1, 'a', 'escrito à mão')"},
         1,
         "Tabela TMAO: colunas que ficaram só em BTMAO: A_MAO",
         "select t.CODIGO, t.NOME, b.A_MAO from TMAO t join BTMAO b on b.CODIGO = t.CODIGO",
         "1|a|escrito à mão",
         2},
        {"TVIS",
         {"create table TVIS (CODIGO integer not null primary key, NOME varchar(20))",
          "insert into TVIS values (1, 'a')", "create view VVIS as select NOME from TVIS"},
         1,
         "Dependem dela: visão VVIS",
         "select NOME from VVIS",
         "a",
         -1},
        {"TGAT",
         {"create table TGAT (CODIGO integer not null primary key, NOME varchar(20))",
          "insert into TGAT values (1, 'a')",
          "create trigger GGAT for TGAT before update as begin new.NOME = 'gatilho'; end"},
         1,
         "Tabela TGAT: gatilhos não recriados, fonte no arquivo de rejeitados: GGAT",
         "select CODIGO, NOME from TGAT",
         "1|a",
         2},
        {"TUSO",
         {"create table TUSO (CODIGO integer not null primary key, NOME varchar(20))",
          "insert into TUSO values (1, 'a')"},
         1,
         "Tabela TUSO não reconstruída: em uso por outra conexão: ",
         "select CODIGO, NOME from TUSO",
         "1|a",
         1},
        {"TFIM",
         {"create table TFIM (CODIGO integer not null primary key, NOME varchar(20))",
          "insert into TFIM values (1, 'fim')"},
         1,
         "",
         "select CODIGO, NOME from TFIM",
         "1|fim",
         2},
    };
    return casos;
}

std::vector<TColuna> Colunas() {
    std::vector<TColuna> colunas;
    for (const auto& caso : Casos()) {
        colunas.push_back({caso.tabela, "CODIGO", "ftInteger", 0, caso.chave});
        colunas.push_back({caso.tabela, "NOME", "ftString", 20, 0});
    }
    return colunas;
}

TEST(TabelasDificeisTest, EachIsReportedKeepsItsRowsAndTheRunGoesOn) {
    const TMolde molde;
    const TPastaTemporaria raiz;
    const auto pasta = raiz / "loja";
    molde.CopiaPara(pasta);
    Empacota(pasta, Colunas());
    EscreveArquivo(pasta / "naocria.wkd", "");
    TTelaDeTeste tela;
    TDataModulo dm(TAliases(pasta / "WKD.ini"), tela);
    dm.SQLConnection1.SetAlias("LOJA");
    dm.SQLConnection1.Open();
    for (const auto& caso : Casos()) {
        for (const char* comando : caso.criacao) dm.SQLConnection1.ExecuteDirect(comando);
        dm.SQLConnection1.ExecuteDirect("insert into SARQUIVO (COD_MODULO, NOME_ARQUIVO, VERSAO) values ('001', '" +
                                        std::string(caso.tabela) + "', 1)");
    }
    GravaColunas(dm.SQLConnection1, Colunas());
    const auto outra = CriaConexaoFirebird(ParametrosFirebird(pasta / "loja.fdb"));
    outra->Open();
    outra->StartTransaction();
    outra->Prepara("update TUSO set NOME = 'outro'")->Executa();

    TOpcoes opcoes = OpcoesDeTeste(pasta);
    opcoes.modoCompleto = true;
    TEstado estado;
    EXPECT_EQ(TAtualizacao(dm, opcoes, estado).Executa(), TFimDaAtualizacao::Concluida);
    outra->Rollback();

    dm.SQLConnection1.Open();
    for (const auto& caso : Casos()) {
        SCOPED_TRACE(caso.tabela);
        const std::string tabela = caso.tabela;
        EXPECT_EQ(Linhas(dm.SQLConnection1, caso.consulta), caso.linhas);
        EXPECT_EQ(Linhas(dm.SQLConnection1, "select VERSAO from SARQUIVO where NOME_ARQUIVO = '" + tabela + "'"),
                  std::to_string(caso.versao));
        EXPECT_TRUE(TTelaDeTeste::Contem(tela.memo1, "Atualizou o arquivo: " + tabela));
        EXPECT_EQ(TTelaDeTeste::Contem(tela.memo2, *caso.aviso ? caso.aviso : tabela), *caso.aviso != '\0')
            << Junta(tela.memo2, "\n");
        if (caso.versao == 2) continue;
        EXPECT_TRUE(std::ranges::any_of(tela.log, [&](const auto& entrada) { return entrada.tabela == tabela; }));
    }
    EXPECT_EQ(tela.infos.size(), 1U) << "the row that repeats its key";
}

}  // namespace
}  // namespace wkd
