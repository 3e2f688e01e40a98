#include "tables/TB.h"

#include <fstream>
#include <sstream>

#include "TBApoio.h"

namespace wkd {
namespace {

std::string Conteudo(const std::filesystem::path& arquivo) {
    std::ostringstream texto;
    texto << std::ifstream(arquivo, std::ios::binary).rdbuf();
    return texto.str();
}

TEST_F(TBTest, CreatesATableFromItsDictionaryRowsOnce) {
    Dicionario("Tcli", {{"CODIGO", "ftInteger", "", "", "", 1},
                        {"NOME", "ftString", "0", "", "", 0},
                        {"TIPO", "ftString", "1", "s", "", 0},
                        {"SALDO", "ftFloat", "", "1,5", "", 0},
                        {"DOBRO", "ftFloat", "", "", "SALDO * 2", 0},
                        {"TOTAL", "ftAggregate", "", "", "", 0},
                        {"FOTO", "ftBlob", "", "", "", 0}});
    ASSERT_TRUE(tb_.CriaTabela("TCLI", false)) << tb_.Erro().mensagem;
    EXPECT_EQ(
        Estrutura("TCLI"),
        "CODIGO integer!, NOME varchar(150), TIPO varchar(1)='S', SALDO double precision='1.5', FOTO blob sub_type 0");
    EXPECT_EQ(Conteudo(pasta_ / "erroCria.sql"),
              "Create Table TCLI (\nCODIGO integer  not null ,\nNOME varchar (150),\nTIPO varchar (1)default 'S',\n"
              "SALDO double Precision default '1.5',\nFOTO BLOB SUB_TYPE 0 SEGMENT SIZE 80 \n )");

    Executa("insert into TCLI (CODIGO) values (1)");
    EXPECT_FALSE(tb_.CriaTabela("TCLI", false));
    EXPECT_EQ(Linhas("select CODIGO, TIPO from TCLI"), "1|S");
}

TEST_F(TBTest, AFolderThatCannotBeWrittenStopsNoTable) {
    Dicionario("TCLI", {{"CODIGO", "ftInteger", "", "", "", 1}});
    TTB semPasta(conexao_, pasta_ / "nao existe");
    EXPECT_TRUE(semPasta.CriaTabela("TCLI", false)) << semPasta.Erro().mensagem;
}

TEST_F(TBTest, TheBackupTableHoldsEveryValueOfThePhysicalTable) {
    Executa(
        "create table TCLI (CODIGO integer, NOME varchar(80), CONTA bigint, OBS blob, EXTRA numeric(9,2), \"x y\" "
        "date, CURTO varchar(3))");
    Dicionario("TCLI", {{"CODIGO", "ftInteger", "", "", "", 1},
                        {"NOME", "ftString", "40", "", "", 0},
                        {"CONTA", "ftInteger", "", "", "", 0},
                        {"OBS", "ftString", "20", "", "", 0},
                        {"CURTO", "ftString", "9", "", "", 0},
                        {"NOVA", "ftDate", "", "", "", 0}});
    Executa("create table BTCLI (NOVA date, CURTO varchar(3))");
    ASSERT_TRUE(tb_.CriaTabela("TCLI", true)) << tb_.Erro().mensagem;
    EXPECT_EQ(
        Estrutura("BTCLI"),
        "CODIGO integer!, NOME varchar(80), CONTA bigint, OBS blob sub_type 0, CURTO varchar(9), NOVA date, EXTRA "
        "numeric(9,2), x y date");
}

TEST_F(TBTest, ATableOfTheDictionaryIsNeverTakenForABackupTable) {
    Dicionario("TCLI", {{"CODIGO", "ftInteger", "", "", "", 1}});
    Dicionario("BTCLI", {{"CODIGO", "ftInteger", "", "", "", 1}});
    ASSERT_TRUE(tb_.CriaTabela("TCLI", false));
    ASSERT_TRUE(tb_.CriaTabela("BTCLI", false));
    Executa("insert into BTCLI values (7)");
    EXPECT_FALSE(tb_.CriaTabela("TCLI", true));
    EXPECT_EQ(Linhas("select * from BTCLI"), "7");
}

TEST_F(TBTest, WhatCannotBeCreatedIsKnownBeforehand) {
    struct TCaso {
        std::vector<TColunaDicionario> colunas;
        const char* motivo;
    };
    const TCaso casos[] = {
        {{}, "não tem colunas"},
        {{{"A", "ftFloat", "", "", "B * 2", 0}}, "não tem colunas"},
        {{{"A", "ftDesconhecido", "", "", "", 0}}, "ftDesconhecido"},
        {{{"NOME", "ftString", "1", "", "", 0}, {"nome ", "ftDate", "", "", "", 0}}, "nome"},
        {{{"ORDER", "ftInteger", "", "", "", 0}}, "ORDER"},
    };
    for (const auto& [colunas, motivo] : casos) {
        const auto impedimento = tb_.ImpedimentoParaCriar("TX", colunas);
        ASSERT_TRUE(impedimento) << motivo;
        EXPECT_NE(impedimento->mensagem.find(motivo), std::string::npos) << impedimento->mensagem;
    }
    Executa("create table TX (A integer)");  // existing, as before its rebuild
    EXPECT_EQ(tb_.ImpedimentoParaCriar("TX", {{"A", "GUID", "38", "it's", "", 1}}), std::nullopt);
}

/// The server says so only at the commit.
TEST(TBRegistroTest, TheLargestRowIsTheServers) {
    for (const char* conjunto : {"WIN1252", "UTF8"}) {
        SCOPED_TRACE(conjunto);
        TBancoTemporario banco(conjunto);
        TTB tb(banco.Conexao(), banco.Arquivo().parent_path());
        const int letras = std::string_view(conjunto) == "UTF8" ? 8'191 : 32'765;
        std::vector<TColunaDicionario> colunas = {
            {"A", "ftString", "3", "", "", 0}, {"F", "ftBlob", "", "", "", 0},
            {"I", "ftInteger", "", "", "", 0}, {"T", "ftTime", "", "", "", 0},
            {"D", "ftFloat", "", "", "", 0},   {"X", "ftString", std::to_string(letras), "", "", 0},
            {"Y", "ftString", "", "", "", 0}};
        int cabem = letras - 100;
        for (colunas.back().tamanho = std::to_string(cabem); !tb.ImpedimentoParaCriar("TX", colunas);)
            colunas.back().tamanho = std::to_string(++cabem);
        EXPECT_THROW(banco.Conexao().ExecuteDirect(tb.ComandoCriaTabela("TX", colunas)), TErroBanco);
        colunas.back().tamanho = std::to_string(cabem - 1);
        EXPECT_NO_THROW(banco.Conexao().ExecuteDirect(tb.ComandoCriaTabela("TX", colunas))) << cabem;
    }
}

TEST_F(TBTest, MissingColumnsAreAddedAlsoBesideRows) {
    Executa("create table TCLI (CODIGO integer not null)");
    Executa("insert into TCLI values (1)");
    Dicionario("TCLI", {{"CODIGO", "ftInteger", "", "", "", 1},
                        {"FILIAL", "ftInteger", "", "", "", 1},
                        {"VALUE", "ftString", "5", "", "", 0},
                        {"UF", "ftString", "2", "SP", "", 0},
                        {"DOBRO", "ftInteger", "", "", "CODIGO * 2", 0}});
    EXPECT_FALSE(tb_.AtualizaTabela("TCLI"));
    EXPECT_TRUE(tb_.Erro().mensagem.starts_with("VALUE: ")) << tb_.Erro().mensagem;
    EXPECT_EQ(Estrutura("TCLI"), "CODIGO integer!, FILIAL integer, UF varchar(2)='SP'");
    Executa("insert into TCLI (CODIGO) values (2)");
    EXPECT_EQ(Linhas("select * from TCLI order by 1"), "1|<null>|<null>;2|<null>|SP");
    EXPECT_FALSE(tb_.AtualizaTabela("TNAOEXISTE"));
}

TEST_F(TBTest, RowsAreFoundByConditionAndWrittenWithTheirBlobs) {
    Executa("create table TRELATORIOS (NOME varchar(40) not null primary key, DESCRICAO varchar(40), ARQUIVO blob)");
    Executa("insert into TRELATORIOS values ('venda.rtm', 'antiga', 'x')");
    Executa("insert into TRELATORIOS values ('VENDA.RTM', 'outra', 'y')");
    const std::string layout(200'000, '\x81');

    EXPECT_FALSE(tb_.PosicionaTB("TRELATORIOS", "Upper(nome) = 'COMPRA.RTM'"));
    EXPECT_THROW(tb_.Editar(), std::logic_error);
    tb_.Novo("TRELATORIOS");
    tb_.SetValor("Nome", "COMPRA.RTM");
    tb_.SetValor("ARQUIVO", TBytes{layout});
    tb_.Grava();
    ASSERT_TRUE(tb_.PosicionaTB("TRELATORIOS", "nome = 'venda.rtm'"));
    tb_.Editar();
    tb_.SetValor("ARQUIVO", TValor());
    tb_.SetValor("arquivo", TBytes{"novo"});
    tb_.SetValor("NOME", "VENDAS.RTM");
    tb_.Grava();

    EXPECT_EQ(Linhas("select NOME, DESCRICAO, octet_length(ARQUIVO) from TRELATORIOS order by NOME"),
              "COMPRA.RTM|<null>|200000;VENDA.RTM|outra|1;VENDAS.RTM|antiga|4");
    EXPECT_FALSE(conexao_.InTransaction());

    // one row only, though the condition fits two
    ASSERT_TRUE(tb_.PosicionaTB("TRELATORIOS", "NOME starting 'VENDA'"));
    tb_.Editar();
    tb_.SetValor("DESCRICAO", "uma");
    tb_.Grava();
    EXPECT_EQ(Linhas("select count(*) from TRELATORIOS where DESCRICAO = 'uma'"), "1");
}

}  // namespace
}  // namespace wkd
