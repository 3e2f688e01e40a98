#include "layout/Preambulo.h"

#include <gtest/gtest.h>

#include "ModuloTemporario.h"
#include "values/Texto.h"

namespace wkd {
namespace {

class PreambuloTest : public ::testing::Test {
  protected:
    /// The dictionary tables as the oldest databases have them.
    void DicionarioAntigo() {
        for (const char* comando :
             {"create table SARQUIVO (COD_MODULO varchar(3), NOME_ARQUIVO varchar(50), VERSAO integer)",
              "create table SATRIB (ARQUIVO varchar(50), NOME varchar(25), PRINCIPAL integer)",
              "create table SPESQ (ARQUIVO varchar(50), NOMEPESQUISA varchar(50))",
              "create table SPESQAUX (ARQUIVO varchar(50), NOME varchar(50))",
              "create table SLOOKUP (ARQUIVO varchar(50), CAMPO varchar(25))", "create table TARQ_VERB (A integer)",
              "create table BTARQ_VER (A integer)"})
            dm_.SQLConnection1.ExecuteDirect(comando);
        dm_.AtualizaListaDeTabelas();
    }

    /// Columns from the server, not from the data module's memory.
    std::string Colunas(std::string_view tabela) {
        std::vector<std::string> textos;
        for (const auto& coluna : dm_.SQLConnection1.Colunas(tabela))
            textos.push_back(coluna.nome + " " + coluna.tipoSql + (coluna.requerido ? "!" : ""));
        return Junta(textos, ", ");
    }

    TModuloTemporario modulo_;
    TDataModulo& dm_ = modulo_.Modulo();
};

TEST_F(PreambuloTest, BringsAnOldDictionaryToTheCurrentLayoutOnce) {
    DicionarioAntigo();
    dm_.SQLConnection1.ExecuteDirect("create table SADMMOD (COD_MODULO varchar(3))");
    AtualizaTabelasDoDicionario(dm_);

    const struct {
        const char *tabela, *colunas;
    } casos[] = {
        {"TARQ_VERB", ""},
        {"BTARQ_VER", ""},
        {"SADMMOD", "COD_MODULO varchar(3), TELA_EXCLUSIVA_NAO_ABRE_JUNTO varchar(50), PESQUISA_AVANCADA integer"},
        {"SARQ_RELACIONA_PAI",
         "ARQUIVO_PAI varchar(50), ARQUIVO_FILHO varchar(50), CAMPO_PAI varchar(25), CAMPO_FILHO varchar(25)"},
        {"SARQUIVO",
         "COD_MODULO varchar(3), NOME_ARQUIVO varchar(50), VERSAO integer, COD_PLUGIN varchar(50), ARQUIVO_PAI "
         "varchar(50), PESQUISA_AVANCADA integer, DESCRICAO_TABELA varchar(50)"},
        {"SARQUIVO_USER",
         "COD_MODULO varchar(3), NOME_ARQUIVO varchar(50), ULT_MODIFICACAO timestamp, OBS blob sub_type 0, NOME_TABLE "
         "varchar(40), VERSAO integer, COD_PLUGIN varchar(50), ARQUIVO_PAI varchar(50), PESQUISA_AVANCADA integer, "
         "DESCRICAO_TABELA varchar(50)"},
        {"SLISTA_CONTROLE", "ARQUIVO varchar(50), CAMPO varchar(25), TEXTO varchar(100), VALOR varchar(100)"},
        {"SATRIB",
         "ARQUIVO varchar(50), NOME varchar(25), PRINCIPAL integer, COD_PLUGIN varchar(50), ATUALIZA_LOOKUP integer, "
         "PESQUISA_VISIVEL integer, TIPO_CONTROLE varchar(25), PROPRIEDADE_CONTROLE varchar(2000), SEQUENCIA_PESQUISA "
         "integer"},
        {"SPESQ", "ARQUIVO varchar(50), NOMEPESQUISA varchar(50), COD_PLUGIN varchar(50)"},
        {"SPESQ_USER",
         "ARQUIVO varchar(50), SEQ integer, NOMEPESQUISA varchar(50), INDICE varchar(50), TITULO varchar(50), TIPO "
         "varchar(1), COD_PLUGIN varchar(50)"},
        {"SPESQAUX_USER",
         "ARQUIVO varchar(50), NOME varchar(50), SEQ integer, CAMPOS varchar(25), AUT_ integer, COD_PLUGIN "
         "varchar(50)"},
        {"SLOOKUP_USER",
         "ARQUIVO varchar(50), CAMPO varchar(25), AUT_ integer, CAMPOPAI varchar(25), CAMPOFILHO varchar(25), "
         "COD_PLUGIN varchar(50)"},
    };
    for (const auto& [tabela, colunas] : casos) EXPECT_EQ(Colunas(tabela), colunas) << tabela;
    const std::string satribUser = Colunas("SATRIB_USER");
    EXPECT_TRUE(satribUser.starts_with("ARQUIVO varchar(50)!, SEQUENCIA integer, NOME varchar(25)!, ")) << satribUser;
    EXPECT_TRUE(
        satribUser.ends_with("CALCULO varchar(250), COD_PLUGIN varchar(50), TIPO_CONTROLE varchar(25), "
                             "PROPRIEDADE_CONTROLE varchar(2000), PRINCIPAL integer, SEQUENCIA_PESQUISA integer"))
        << satribUser;
    EXPECT_TRUE(dm_.ExisteTabela("SLISTA_CONTROLE"));
    EXPECT_FALSE(dm_.ExisteTabela("TARQ_VERB"));
    EXPECT_TRUE(dm_.VerificaExisteCampo("SLOOKUP", "cod_plugin"));

    std::vector<std::string> comandos;
    dm_.SQLConnection1.Observa([&](std::string_view comando) {
        if (!comando.starts_with("select ")) comandos.emplace_back(comando);
    });
    AtualizaTabelasDoDicionario(dm_);
    EXPECT_EQ(Junta(comandos, "\n"), "");
}

/// Each of these alone says that the rows of TARQ_VER, or of TARQ_VERB, may be nowhere else.
TEST_F(PreambuloTest, ABackupOfAnOpenRebuildWaitsForItsEnd) {
    const struct {
        const char *marca, *fim, *fica;
    } casos[] = {
        {"insert into SARQUIVO (NOME_ARQUIVO, VERSAO) values ('Tarq_Ver', -1)", "update SARQUIVO set VERSAO = 3",
         "BTARQ_VER"},
        {"insert into TINI values ('ReconstroiTabela', 'TARQ_VER', 'RESTAURANDO 11')", "delete from TINI", "BTARQ_VER"},
        {"comment on table BTARQ_VER is 'AtualizaWKD: backup restaurando'",
         "comment on table BTARQ_VER is 'AtualizaWKD: backup terminado'", "BTARQ_VER"},
        {"insert into SARQUIVO (NOME_ARQUIVO, VERSAO) values ('TARQ_VERB', -1)", "delete from SARQUIVO", "TARQ_VERB"},
    };
    TConnection& conexao = dm_.SQLConnection1;
    conexao.ExecuteDirect("create table SARQUIVO (COD_MODULO varchar(3), NOME_ARQUIVO varchar(50), VERSAO integer)");
    conexao.ExecuteDirect("create table TINI (SESSAO varchar(50), CHAVE varchar(50), VALOR varchar(50))");
    for (const auto& [marca, fim, fica] : casos) {
        SCOPED_TRACE(marca);
        for (const char* tabela : {"TARQ_VERB", "BTARQ_VER"})
            conexao.ExecuteDirect("create table " + std::string(tabela) + " (A integer)");
        conexao.ExecuteDirect(marca);
        dm_.AtualizaListaDeTabelas();
        for (const auto& pendencia : PendenciasDoDicionario(dm_)) EXPECT_NE(pendencia.tabela, fica);
        AtualizaTabelasDoDicionario(dm_);
        EXPECT_EQ(dm_.ExisteTabela("TARQ_VERB")   ? "TARQ_VERB"
                  : dm_.ExisteTabela("BTARQ_VER") ? "BTARQ_VER"
                                                  : "",
                  std::string(fica));
        conexao.ExecuteDirect(fim);
        AtualizaTabelasDoDicionario(dm_);
        EXPECT_FALSE(dm_.ExisteTabela(fica));
        conexao.ExecuteDirect("delete from SARQUIVO");
    }
}

TEST_F(PreambuloTest, WhatTheServerRefusesDoesNotStopTheRest) {
    DicionarioAntigo();  // without SADMMOD
    dm_.SQLConnection1.ExecuteDirect("create view SARQ_RELACIONA_PAI as select * from SPESQ");
    AtualizaTabelasDoDicionario(dm_);
    EXPECT_TRUE(dm_.VerificaExisteCampo("SLOOKUP", "COD_PLUGIN"));
    ASSERT_EQ(modulo_.Tela().memo2.size(), 1U);
    EXPECT_NE(modulo_.Tela().memo2[0].find("SARQ_RELACIONA_PAI"), std::string::npos) << modulo_.Tela().memo2[0];
}

TEST_F(PreambuloTest, SqlServerGetsItsOwnColumnTypes) {
    DicionarioAntigo();
    modulo_.Fala("tbSQLServer");
    AtualizaTabelasDoDicionario(dm_);  // the server that answers is Firebird, which refuses them
    for (const char* parte : {"ULT_MODIFICACAO datetime, OBS IMAGE,", "COMENTARIO IMAGE,", "TEXTO   nvarchar(100)"})
        EXPECT_TRUE(modulo_.Tela().LogContem(parte)) << parte;
}

}  // namespace
}  // namespace wkd
