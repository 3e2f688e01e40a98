#include "NovaApoio.h"

namespace wkd {
namespace {

const TAtributos kVelhos = {{"CODIGO", "ftInteger", 0, 1}, {"NOME", "ftString", 10}, {"ANTIGO", "ftString", 5}};
const TAtributos kNovos = {{"CODIGO", "ftInteger", 0, 1}, {"NOME", "ftString", 30}, {"TIPO", "ftString", 1, 0, "n"}};
constexpr int kLinhas = 40, kLote = 11, kRestauradas = 22;

/// The connection is lost behind the second batch of the restore.
void InterrompeARestauracao(TBancoDaNova& banco) {
    int lotes = 0;
    banco.Conexao().Observa([&](std::string_view sql) {
        if (Insere(sql, "TCLI") && ++lotes > kRestauradas / kLote)
            throw TErroBanco({"caiu", 0, "08006", "", TFalha::Conexao, true});
    });
    EXPECT_THROW(banco.Reconstroi(), TErroBanco);
    banco.Conexao().Observa({});
    banco.Conexao().Close();
    banco.Conexao().Open();
    EXPECT_EQ(banco.Le("select count(*) from TCLI"), std::to_string(kRestauradas));
}

/// The restore of a rebuilt table was broken off behind its second batch; people worked in the table afterwards.
struct TBancoEmUso : TBancoDaNova {
    /// `repete`: the old table had no key, and its last row repeats the one of the third.
    explicit TBancoEmUso(int chave, bool comTini = true, bool repete = false) : TBancoDaNova("UTF8", comTini) {
        TAtributos velhos = kVelhos, novos = kNovos;
        velhos[0].chave = novos[0].chave = chave;
        Guardada("TCLI", velhos);
        Executa("create table TCLI (CODIGO integer not null, NOME varchar(10), ANTIGO varchar(5)" +
                std::string(chave == 1 && !repete ? ", constraint PK_TCLI primary key (CODIGO))" : ")"));
        std::vector<std::string> comandos;
        for (int i = 1; i <= kLinhas; ++i)
            comandos.push_back("insert into TCLI values (" + std::to_string(i) + ", 'nome', 'v')");
        if (repete) comandos.push_back("update TCLI set CODIGO = 3, NOME = 'repete' where CODIGO = 40");
        ExecutaTudo(comandos);
        Executa("create index ICLI_A_MAO on TCLI computed by (upper(\nNOME))");
        Executa("grant select on TCLI to MARIA");
        Pacote("TCLI", novos);
        InterrompeARestauracao(*this);
        ExecutaTudo({"update TCLI set NOME = 'mudado por alguém', TIPO = 'X' where CODIGO = 1",
                     "delete from TCLI where CODIGO = 2", "insert into TCLI values (99, 'entrou', 'Y')"});
        tela_.memo2.clear();
        tela_.infos.clear();
    }

    std::string IndicesEPermissoes() {
        return Le("select trim(rdb$index_name) from rdb$indices where rdb$relation_name = 'TCLI' and rdb$index_name not"
                  " starting 'PK'") +
               " " +
               Le("select trim(rdb$privilege) from rdb$user_privileges where rdb$relation_name = 'TCLI' and"
                  " rdb$user = 'MARIA'");
    }
};

TEST(RetomadaTest, WorkInAHalfRestoredTableStaysAndTheRestComesBack) {
    for (const int chave : {1, 0}) {
        SCOPED_TRACE(chave == 1 ? "with key" : "without key");
        TBancoEmUso banco(chave);
        banco.Reconstroi();
        EXPECT_EQ(banco.Le("select CODIGO, NOME, TIPO from TCLI where CODIGO in (1, 23, 40, 99) order by 1"),
                  "1|mudado por alguém|X;23|nome|N;40|nome|N;99|entrou|Y");
        // Without a key a deleted row is known to have been back.
        EXPECT_EQ(banco.Le("select count(*), count(distinct CODIGO) from TCLI"), chave == 1 ? "41|41" : "40|40");
        EXPECT_EQ(banco.Le("select count(*) from BTCLI where NOME = 'nome' and ANTIGO = 'v'"), "40");
        EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2");
        EXPECT_EQ(banco.Le("select count(*) from TINI"), "0");
        EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "Tabela TCLI: conteúdo diferente de BTCLI"))
            << Junta(banco.tela_.memo2, "\n");
        EXPECT_FALSE(TTelaDeTeste::Contem(banco.tela_.memo2, "ATENÇÃO")) << Junta(banco.tela_.memo2, "\n");
        EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "ANTIGO"));
        EXPECT_EQ(banco.IndicesEPermissoes(), "ICLI_A_MAO S");
        EXPECT_TRUE(banco.tela_.infos.empty()) << Junta(banco.tela_.infos, "\n");
    }
}

TEST(RetomadaTest, WhatWasEnteredSinceIsNoDifference) {
    TBancoDaNova banco;
    const TAtributos colunas = {{"CODIGO", "ftInteger", 0, 1}, {"NOME", "ftString", 5}};
    banco.Guardada("TREC", colunas);
    banco.Pacote("TREC", colunas);
    banco.Executa("create table TREC (CODIGO integer not null primary key, NOME varchar(5))");
    banco.Executa("create table BTREC (CODIGO integer not null, NOME varchar(5))");
    banco.ExecutaTudo({"insert into BTREC values (1, 'a')", "insert into BTREC values (2, 'b')",
                       "insert into TREC values (1, 'a')", "insert into TREC values (3, 'nova')",
                       "update SARQUIVO set VERSAO = -1"});
    banco.Reconstroi();
    EXPECT_EQ(banco.Le("select * from TREC order by 1"), "1|a;2|b;3|nova");
    EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2");
    EXPECT_TRUE(banco.tela_.memo2.empty()) << Junta(banco.tela_.memo2, "\n");
}

TEST(RetomadaTest, AnotherPackageFindsTheTableWholeFirst) {
    for (const bool comTini : {true, false}) {
        SCOPED_TRACE(comTini ? "marked" : "without marks");
        TBancoEmUso banco(1, comTini);
        TAtributos outros = kNovos;
        outros[1].tamanho = 40;
        outros.push_back({"LOJA", "ftInteger", 0, 0, "7"});
        banco.Pacote("TCLI", outros);
        banco.Reconstroi();
        EXPECT_EQ(banco.Le("select CODIGO, NOME, TIPO, LOJA from TCLI where CODIGO in (1, 23, 40, 99) order by 1"),
                  "1|mudado por alguém|X|7;23|nome|N|7;40|nome|N|7;99|entrou|Y|7");
        EXPECT_EQ(banco.Le("select count(*), count(distinct CODIGO) from TCLI"), "41|41");
        EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2");
        EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "conteúdo diferente de BTCLI"));
        EXPECT_EQ(banco.IndicesEPermissoes(), "ICLI_A_MAO S");
        const std::string rejeitados = banco.Rejeitados();
        EXPECT_EQ(std::ranges::count(rejeitados, '\n'), kLinhas + 1) << rejeitados;  // and the row that changed
        EXPECT_NE(rejeitados.find("\"chave\": {\"CODIGO\": 40}"), std::string::npos) << rejeitados;
        EXPECT_NE(rejeitados.find("\"valores\": {\"ANTIGO\": \"v\"}"), std::string::npos) << rejeitados;
        EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "valores no arquivo de rejeitados: ANTIGO"));
    }
}

/// The rebuild may have given such a column other values, so it is not compared with the backup.
TEST(RetomadaTest, WorkInANumberedColumnIsInTheNextBackup) {
    TBancoDaNova banco;
    TAtributos colunas = {
        {"CODIGO", "ftInteger", 0, 1}, {"ORDEM", "ftInteger", 0, 0, "", 1, 1}, {"NOME", "ftString", 5}};
    banco.Guardada("TCLI", colunas);
    banco.Executa("create table TCLI (CODIGO integer not null primary key, ORDEM integer, NOME varchar(5))");
    std::vector<std::string> comandos;
    for (int i = 1; i <= kLinhas; ++i)
        comandos.push_back("insert into TCLI values (" + std::to_string(i) + ", 1, 'n')");
    banco.ExecutaTudo(comandos);
    colunas[2].tamanho = 9;
    banco.Pacote("TCLI", colunas);
    InterrompeARestauracao(banco);
    banco.Executa("update TCLI set ORDEM = 77 where CODIGO = 1");
    colunas[2].tamanho = 12;
    banco.Pacote("TCLI", colunas);
    banco.Reconstroi();
    EXPECT_EQ(banco.Le("select * from TCLI where CODIGO in (1, 40)"), "1|77|n;40|1|n");
    EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2");
}

TEST(RetomadaTest, ABackupWithValuesOfItsOwnIsNotReplaced) {
    TBancoEmUso banco(1);
    TAtributos outros = kNovos;
    outros.push_back({"ANTIGO", "ftString", 5});
    banco.Pacote("TCLI", outros);
    banco.Reconstroi();
    EXPECT_TRUE(banco.estado_.falhouApagar);
    EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "só BTCLI tem os valores de ANTIGO"));
    EXPECT_EQ(banco.Le("select count(*) from TCLI"), "41");
    EXPECT_EQ(banco.Le("select count(*) from BTCLI where ANTIGO = 'v'"), "40");
    EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "-1");
}

TEST(RetomadaTest, AKeyThatIsTakenIsReportedAndItsRowKept) {
    TBancoEmUso banco(0);
    banco.Executa("create unique index ITCLI on TCLI (CODIGO)");
    banco.Executa("insert into TCLI values (30, 'outro', 'Z')");
    banco.Reconstroi();
    EXPECT_EQ(banco.Le("select NOME from TCLI where CODIGO = 30"), "outro");
    EXPECT_EQ(banco.tela_.infos.size(), 1U);
    EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "***** ATENÇÃO *******"));
    EXPECT_NE(banco.Rejeitados().find("\"CODIGO\": 30"), std::string::npos) << banco.Rejeitados();
}

TEST(RetomadaTest, ARowThatRepeatsAKeyBehindTheBreakIsReportedAndKept) {
    TBancoEmUso banco(1, true, true);
    banco.Reconstroi();
    EXPECT_EQ(banco.Le("select NOME from TCLI where CODIGO = 3"), "nome");
    EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2");
    EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "***** ATENÇÃO *******")) << Junta(banco.tela_.memo2, "\n");
    EXPECT_NE(banco.Rejeitados().find("\"CODIGO\": 3, \"NOME\": \"repete\""), std::string::npos) << banco.Rejeitados();
}

}  // namespace
}  // namespace wkd
