#include "PassesApoio.h"
#include "passes/Passes.h"

namespace wkd {
namespace {

class PassesDicionarioTest : public TPassesTest {
  protected:
    PassesDicionarioTest() {
        ExecutaTudo(
            {"insert into SARQUIVO values ('1', 'TCLI', 1, 'Cadastro de clientes: ação')",
             "insert into SARQUIVO values ('1', 'TPED', 1, null)",
             "insert into SARQUIVO values ('2', 'TPED', 1, 'de outro módulo')",
             "insert into SARQUIVO values ('1', 'D''AGUA', 1, 'fora do pacote')",
             "insert into SARQUIVO values ('1', 'U_MEU', 1, '')", "insert into SARQUIVO values ('1', 'u_meu', 1, '')",
             "insert into SATRIB (ARQUIVO, NOME, TIPO, DISCRIMINACAO) values ('TCLI', 'NOME', 'ftString', 'Nome')",
             "insert into SATRIB (ARQUIVO, NOME, LOOKUP_ARQUIVO) values ('TCLI', 'COD', '')",
             "insert into SATRIB (ARQUIVO, NOME, LOOKUP_ARQUIVO) values ('TCLI', 'CIDADE', 'TCID')",
             "insert into TRBTABLE (TABLENAME, TABLEALIAS) values ('VELHA', 'Velha')",
             "insert into TRBFIELD (TABLENAME, FIELDNAME) values ('VELHA', 'VELHO')"});
        Pacote({"TCLI", "TPED"});
    }

    std::string Tabelas() { return Linhas("select * from TRBTABLE order by 1, 2"); }
    std::string Campos() { return Linhas("select * from TRBFIELD order by 1, 2"); }
};

TEST_F(PassesDicionarioTest, TheReportDictionaryFollowsThePackage) {
    dm_.SArquivoNovo.SetFilter("nome_arquivo", {"TCLI"});
    Dicionario_tabelas(ctx_);
    EXPECT_EQ(Linhas("select COD_MODULO, NOME_ARQUIVO from SARQUIVO order by 2"), "1|TCLI;1|TPED;1|U_MEU")
        << "the filter hides tables, it does not take them out of the package";
    EXPECT_EQ(Tabelas(), "TCLI|Cadastro de clientes: ação|<null>;TPED|TPED|<null>;U_MEU|U_MEU|<null>");
    EXPECT_EQ(Campos(), "TCLI|COD|<null>|d|T|T|T|F|F;TCLI|NOME|Nome|dtString|T|T|T|F|F");
    EXPECT_TRUE(tela_.log.empty());
    EXPECT_EQ(tela_.atuais,
              (std::vector<std::string>{"Dicionário de dados: Tabela...", "Dicionário de dados: Campos...", ""}));
    EXPECT_EQ(tela_.geral.Maximo() + tela_.geral.Posicao(), 0);

    const std::string depois = Retrato();
    Dicionario_tabelas(ctx_);
    EXPECT_EQ(Retrato(), depois);
}

/// The statements of one dictionary, from the first that empties a table on.
TEST_F(PassesDicionarioTest, TheRowsAreCountedAndCopiedInOneTransactionATable) {
    const auto comandos = [this](std::string_view tipoBanco) {
        Fala(tipoBanco);
        dm_.VerificaExisteCampo("SARQUIVO", "OBS");  // known to a run by then
        comandos_.clear();
        Dicionario_tabelas(ctx_);
        return std::vector(std::ranges::find(comandos_, "delete from trbtable"), comandos_.end());
    };
    const std::vector<std::string> inicio = {"delete from trbtable",
                                             "select count(*) as total from sarquivo",
                                             "insert into TRBTABLE (TableName, TableAlias) select nome_arquivo, "
                                             "nome_arquivo from sarquivo where obs is null",
                                             "select nome_arquivo, obs from sarquivo where obs is not null",
                                             "insert into TRBTABLE (TableName, TableAlias) values (:nome, :obs)",
                                             "insert into TRBTABLE (TableName, TableAlias) values (:nome, :obs)",
                                             "commit",
                                             "select count(*) as total from satrib where ((lookup_arquivo is null) or "
                                             "(lookup_arquivo = ''))",
                                             "delete from trbfield"};
    const auto noFirebird = comandos("tbInterbase");
    const std::string tabelas = Tabelas(), campos = Campos();
    EXPECT_EQ(std::vector(noFirebird.begin(), noFirebird.begin() + 9), inicio);
    EXPECT_TRUE(noFirebird.at(10).starts_with("insert into TRBFIELD ")) << noFirebird.at(10);
    EXPECT_EQ(noFirebird.size(), 12U) << "a savepoint, one copy for all columns, the commit";

    for (const std::string tipo : {"tbMySQL", "tbOracle"}) {
        const auto linhaALinha = comandos(tipo);
        EXPECT_EQ(std::vector(linhaALinha.begin(), linhaALinha.begin() + 9), inicio) << tipo;
        EXPECT_EQ(linhaALinha.at(9), "select * from satrib where ((lookup_arquivo is null) or (lookup_arquivo = ''))");
        EXPECT_EQ(linhaALinha.size(), 13U) << "two columns, one statement each";
        EXPECT_EQ(Tabelas() + Campos(), tabelas + campos) << tipo;
    }
}

TEST_F(PassesDicionarioTest, WhatTheServerDoesNotCopyIsCopiedRowByRow) {
    Fala("tbSQLServer");  // whose words for the type this server does not take
    Dicionario_tabelas(ctx_);
    EXPECT_EQ(Campos(), "TCLI|COD|<null>|d|T|T|T|F|F;TCLI|NOME|Nome|dtString|T|T|T|F|F");
    EXPECT_TRUE(tela_.log.empty());
    EXPECT_EQ(std::ranges::count_if(comandos_, [](const auto& c) { return c.find("'d' + coalesce") != c.npos; }), 0)
        << "refused before it is sent";
}

TEST_F(PassesDicionarioTest, WithoutTheTextColumnTheNameStandsForIt) {
    Executa("alter table SARQUIVO drop OBS");
    Dicionario_tabelas(ctx_);
    EXPECT_EQ(Linhas("select TABLENAME from TRBTABLE where TABLEALIAS = TABLENAME order by 1"), "TCLI;TPED;U_MEU");
}

TEST_F(PassesDicionarioTest, ATableThatCannotBeFilledIsReportedAndKeepsItsRowsWhileTheOtherIsFilled) {
    struct TCaso {
        std::string comando, tabelas, campos;
        std::size_t relatos;
    };
    const std::string feitas = "TCLI|Cadastro de clientes: ação|<null>;TPED|TPED|<null>;U_MEU|U_MEU|<null>";
    const std::string feitos = "TCLI|COD;TCLI|NOME";
    const TCaso casos[] = {
        {"update SARQUIVO set OBS = 'Um texto que não cabe na coluna de cem caracteres da tabela do dicionário de "
         "relatórios, nem de longe' where NOME_ARQUIVO = 'TPED'",
         "VELHA|Velha|<null>", feitos, 1},
        {"update SARQUIVO set OBS = null where NOME_ARQUIVO = 'TPED'", feitas, feitos, 0},
        {"alter table TRBFIELD add NAO_NULO integer default 1 not null check (NAO_NULO > 1)", feitas, feitos, 1},
        {"drop table TRBTABLE", "", feitos, 1},
    };
    for (const TCaso& caso : casos) {
        SCOPED_TRACE(caso.comando);
        tela_ = TTelaDeTeste();
        Executa(caso.comando);
        Dicionario_tabelas(ctx_);
        EXPECT_EQ(tela_.log.size(), caso.relatos);
        for (const auto& entrada : tela_.log) {
            EXPECT_EQ(entrada.tabela + entrada.acao, "Inserindo dicionário de dados");
            EXPECT_FALSE(entrada.mensagem.empty());
        }
        EXPECT_EQ(tela_.atuais.back(), "");
        EXPECT_EQ(dm_.SQLConnection1.Colunas("TRBTABLE").empty() ? "" : Tabelas(), caso.tabelas);
        EXPECT_EQ(Linhas("select TABLENAME, FIELDNAME from TRBFIELD order by 1, 2"), caso.campos);
    }
}

}  // namespace
}  // namespace wkd
