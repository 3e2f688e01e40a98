// Which "B" + table is a backup, what a rebuild does with it, and when a rebuild is open.
#include "NovaApoio.h"
#include "context/CargaDoPacote.h"
#include "passes/Passes.h"
#include "run/PassoDaTabela.h"
#include "tables/MarcaDaBackup.h"

namespace wkd {
namespace {

const TAtributos kVelhos = {{"CODIGO", "ftInteger", 0, 1}, {"NOME", "ftString", 10}};
const TAtributos kNovos = {{"CODIGO", "ftInteger", 0, 1}, {"NOME", "ftString", 30}, {"UF", "ftString", 2}};

struct TMorte {};

/// Three rows; OBS is a column that no dictionary knows.
struct TBancoDaBackup : TBancoDaNova {
    explicit TBancoDaBackup(int chave = 1, bool comTini = true) : TBancoDaNova("UTF8", comTini) {
        TAtributos velhos = kVelhos;
        novos_[0].chave = velhos[0].chave = chave;
        Guardada("TCLI", velhos);
        Executa("create table TCLI (CODIGO integer not null, NOME varchar(10), OBS varchar(20)" +
                std::string(chave == 1 ? ", constraint PK_TCLI primary key (CODIGO))" : ")"));
        ExecutaTudo({"insert into TCLI values (1, 'ana', 'paga em dia')", "insert into TCLI values (2, 'bia', null)",
                     "insert into TCLI values (3, 'caio', 'mudou-se')"});
        Pacote("TCLI", novos_);
    }

    /// The next update: one more column.
    void OutroPacote() {
        novos_.push_back({"LOJA", "ftInteger"});
        Pacote("TCLI", novos_);
        Executa("update SARQUIVO set VERSAO = 1");
        LimpaTela();
    }
    void LimpaTela() {
        tela_.memo1.clear();
        tela_.memo2.clear();
        tela_.infos.clear();
        estado_.falhouApagar = false;
    }
    /// Statements from the first with `texto` on are not executed any more.
    void InterrompeEm(const std::string& texto, int vez = 1) {
        Conexao().Observa([&, texto](std::string_view sql) {
            if (vez <= 0 || (sql.find(texto) != std::string_view::npos && --vez == 0)) throw TMorte();
        });
        EXPECT_THROW(Reconstroi(), TMorte);
        Conexao().Observa({});
        Conexao().Rollback();
        dm_.AtualizaListaDeTabelas();
        LimpaTela();
    }
    /// As a run does it, from the reading of what is open on.
    void Passo() {
        Conexao().Rollback();
        dm_.AtualizaListaDeTabelas();
        ctx_.abertas = ReconstrucoesAbertas(dm_);
        VerificaDuplicidadeSarquivo(ctx_);
        dm_.SarquivoVelho.Close();
        dm_.SatribVelho.Close();
        LeDicionarioNovo(ctx_);
        LeDicionarioGravado(ctx_);
        TMarcasDeAnalise marcas(ctx_);
        dm_.SArquivoNovo.First();
        TPassoDaTabela(ctx_, marcas).Executa();
        marcas.Conclui();
    }
    std::string Clientes() { return Le("select CODIGO, NOME from TCLI order by 1, 2"); }
    std::string Memo2() { return Junta(tela_.memo2, "\n"); }

    TAtributos novos_ = kNovos;
};

TEST(ReconstrucaoAbertaTest, ATableOfSomebodyElseEndsTheRebuildAndStays) {
    for (const char* versao : {"1", "-1"}) {
        SCOPED_TRACE(versao);
        TBancoDaBackup banco;
        banco.Executa("create table BTCLI (CODIGO integer, PEDIDO varchar(10), QUANDO date)");
        banco.Executa("insert into BTCLI values (1, 'cimento', '2024-05-06')");
        banco.Executa("update SARQUIVO set VERSAO = " + std::string(versao));
        for (int corrida = 1; corrida <= 2; ++corrida) {
            banco.LimpaTela();
            banco.Reconstroi();
            EXPECT_TRUE(banco.estado_.falhouApagar);
            EXPECT_NE(banco.Memo2().find("BTCLI não é um backup de TCLI"), std::string::npos) << banco.Memo2();
            EXPECT_EQ(banco.Le("select * from BTCLI"), "1|cimento|2024-05-06");
            EXPECT_EQ(banco.Le("select * from TCLI"), "1|ana|paga em dia;2|bia|<null>;3|caio|mudou-se");
        }
        banco.Executa("drop table BTCLI");
        banco.LimpaTela();
        banco.Reconstroi();
        EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2") << banco.Memo2();
        EXPECT_EQ(banco.Clientes(), "1|ana;2|bia;3|caio");
    }
}

TEST(ReconstrucaoAbertaTest, ABackupOfAnEarlierGenerationGivesWay) {
    TBancoDaBackup banco;
    banco.Executa("create table BTCLI (CODIGO integer not null, NOME varchar(10))");
    banco.Executa("insert into BTCLI values (9, 'antigo')");
    banco.Reconstroi();
    EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2") << banco.Memo2();
    EXPECT_EQ(banco.Clientes(), "1|ana;2|bia;3|caio");
    EXPECT_EQ(banco.Le("select CODIGO from BTCLI order by 1"), "1;2;3");
}

TEST(ReconstrucaoAbertaTest, WhatOnlyTheBackupHoldsIsKeptBeforeTheNextOneTakesItsPlace) {
    for (const bool comTini : {true, false}) {
        SCOPED_TRACE(comTini ? "with TINI" : "without TINI");
        TBancoDaBackup banco(1, comTini);
        banco.Reconstroi();
        EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "colunas que ficaram só em BTCLI: OBS"));
        banco.OutroPacote();
        banco.Reconstroi();
        EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2") << banco.Memo2();
        EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "valores no arquivo de rejeitados: OBS")) << banco.Memo2();
        EXPECT_NE(banco.Rejeitados().find("\"chave\": {\"CODIGO\": 1}"), std::string::npos) << banco.Rejeitados();
        EXPECT_NE(banco.Rejeitados().find("{\"OBS\": \"mudou-se\"}"), std::string::npos) << banco.Rejeitados();
        banco.OutroPacote();
        banco.Reconstroi();
        EXPECT_EQ(std::ranges::count(banco.Rejeitados(), '\n'), 2) << banco.Rejeitados();
    }
}

TEST(ReconstrucaoAbertaTest, ARowWhoseKeySomebodyTookIsInTheRejects) {
    TBancoDaBackup banco;
    banco.InterrompeEm("drop table TCLI");
    banco.InterrompeEm("insert into TCLI (");
    banco.Executa("insert into TCLI (CODIGO, NOME) values (2, 'outra')");
    banco.Reconstroi();
    EXPECT_EQ(banco.Clientes(), "1|ana;2|outra;3|caio");
    EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2") << banco.Memo2();
    EXPECT_NE(banco.Rejeitados().find("\"CODIGO\": 2, \"NOME\": \"bia\""), std::string::npos) << banco.Rejeitados();
    EXPECT_NE(banco.Memo2().find("conteúdo diferente de BTCLI: 1 registros"), std::string::npos) << banco.Memo2();
}

/// Somebody writes -1 over a rebuild that has ended: what was done since stays, what was deleted does not come back.
TEST(ReconstrucaoAbertaTest, VersionMinusOneOverAFinishedRebuildUndoesNothing) {
    for (const int chave : {1, 0})
        for (const bool comTini : {true, false}) {
            SCOPED_TRACE((chave ? "with key" : "without key") + std::string(comTini ? "" : ", without TINI"));
            TBancoDaBackup banco(chave, comTini);
            banco.Reconstroi();
            banco.ExecutaTudo({"update TCLI set NOME = 'mudou' where CODIGO = 1", "delete from TCLI where CODIGO = 2",
                               "insert into TCLI (CODIGO, NOME) values (4, 'duda')"});
            banco.OutroPacote();
            banco.Executa("update SARQUIVO set VERSAO = -1");
            banco.Reconstroi();
            EXPECT_EQ(banco.Clientes(), "1|mudou;3|caio;4|duda");
            EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2") << banco.Memo2();
            EXPECT_EQ(banco.Le("select CODIGO from BTCLI order by 1"), "1;3;4");
        }
}

/// A backup without mark: nobody knows whether its rebuild ended.
TEST(ReconstrucaoAbertaTest, VersionMinusOneOverABackupWithoutMarkUnitesBoth) {
    struct TCaso {
        int chave;
        const char *tabela, *depois;
    };
    for (const auto& [chave, tabela, depois] :
         {TCaso{1, "1|mudou;2|bia;3|caio", "1|mudou;2|bia;3|caio;4|duda"},
          // Without key each different row stands as often as in the table where it has more of them.
          TCaso{0, "1|mudou;2|bia;2|bia;3|caio", "1|ana;1|mudou;2|bia;2|bia;3|caio;4|duda;4|duda"}}) {
        SCOPED_TRACE(chave ? "with key" : "without key");
        TBancoDaBackup banco(chave);
        banco.Executa("create table BTCLI (CODIGO integer not null, NOME varchar(10))");
        banco.ExecutaTudo({"insert into BTCLI select CODIGO, NOME from TCLI", "insert into BTCLI values (4, 'duda')",
                           "update TCLI set NOME = 'mudou' where CODIGO = 1", "update SARQUIVO set VERSAO = -1"});
        if (!chave)
            banco.ExecutaTudo({"insert into TCLI values (2, 'bia', null)", "insert into BTCLI values (4, 'duda')"});
        EXPECT_EQ(banco.Clientes(), tabela);
        banco.Reconstroi();
        EXPECT_EQ(banco.Clientes(), depois) << banco.Memo2();
        EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2");
        EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo1,
                                         chave ? "1 registros que só BTCLI tinha" : "3 registros que só BTCLI tinha"))
            << Junta(banco.tela_.memo1, "\n");
    }
}

/// To the server's hash "1A" and "21" are the same.
TEST(ReconstrucaoAbertaTest, RowsWithoutKeyAreToldApartByTheirBlobs) {
    for (const char* naTabela : {"'1A'", "'21'"})
        for (const auto& [primeiro, segundo] : {std::pair("'1A'", "'21'"), {"'21'", "'1A'"}}) {
            TBancoDaNova banco;
            const TAtributos colunas = {{"NOME", "ftString", 10}, {"OBS", "ftBlob"}};
            banco.Guardada("TCLI", colunas);
            banco.Pacote("TCLI", colunas);
            for (const char* tabela : {"TCLI", "BTCLI"})
                banco.Executa("create table " + std::string(tabela) + " (NOME varchar(10), OBS blob)");
            const auto insere = [&](const char* tabela, std::string_view obs) {
                banco.Executa("insert into " + std::string(tabela) + " values ('ana', " + std::string(obs) + ")");
            };
            for (const char* obs : {"null", naTabela}) insere("TCLI", obs);
            for (const char* obs : {"null", "''", primeiro, segundo}) insere("BTCLI", obs);
            banco.Executa("update SARQUIVO set VERSAO = -1");
            banco.Reconstroi();
            EXPECT_EQ(banco.Le("select OBS from TCLI order by cast(OBS as varchar(9))"), "<null>;;1A;21")
                << Junta(banco.tela_.memo2, "\n");
        }
}

/// What may become of the marks of an open rebuild; the table has its rows in the backup alone, or a part of them.
struct TPerda {
    const char* nome;
    const char* comando;
};
constexpr TPerda kPerdas[] = {
    {"nothing", ""},
    {"row of SARQUIVO", "delete from SARQUIVO"},
    {"version written over", "update SARQUIVO set VERSAO = 2"},
    {"row twice", "insert into SARQUIVO select * from SARQUIVO"},
    {"TINI emptied", "delete from TINI"},
};

TEST(ReconstrucaoAbertaTest, AnOpenRebuildIsFinishedWhateverMarkIsLost) {
    for (const int chave : {1, 0})
        for (const char* onde : {"Create Table TCLI", "insert into TCLI ("})
            for (const auto& [nome, comando] : kPerdas) {
                SCOPED_TRACE(std::string(nome) + (chave ? ", with key, " : ", without key, ") + onde);
                TBancoDaBackup banco(chave);
                banco.InterrompeEm(onde);
                if (*comando) banco.Executa(comando);
                banco.Executa("delete from TINI where SESSAO = 'AtualizaTabela'");
                banco.Passo();
                EXPECT_EQ(banco.dm_.ExisteTabela("TCLI") ? banco.Clientes() : "", "1|ana;2|bia;3|caio")
                    << banco.Memo2();
                EXPECT_EQ(banco.Le("select distinct NOME_ARQUIVO, VERSAO from SARQUIVO"), "TCLI|2") << banco.Memo2();
                EXPECT_EQ(banco.Le("select count(*) from TINI"), "0");
            }
}

TEST(ReconstrucaoAbertaTest, APackageWithoutTheTableLeavesTheRowOfAnOpenRebuild) {
    TBancoDaBackup banco;
    banco.InterrompeEm("Create Table TCLI");
    banco.ExecutaTudo(
        {"insert into SARQUIVO values ('1', 'TOUTRA', 1)", "insert into SARQUIVO values ('1', 'TVELHA', 1)"});
    banco.Pacote("TOUTRA", kNovos);
    LimpaArquivoInutilizado(banco.ctx_);
    EXPECT_EQ(banco.Le("select NOME_ARQUIVO, VERSAO from SARQUIVO order by 1"), "TCLI|-1;TOUTRA|1");
}

TEST(ReconstrucaoAbertaTest, ANegativeVersionOfThePackageCountsAsTheStoredOne) {
    TBancoDaBackup banco;
    banco.Reconstroi();
    banco.Executa("delete from TCLI where CODIGO = 2");
    banco.dm_.SArquivoNovo.First();
    banco.dm_.SArquivoNovo.Edit();
    banco.dm_.SArquivoNovo.SetValor("versao", -1);
    banco.dm_.SArquivoNovo.Post();
    banco.LimpaTela();
    LeDicionarioNovo(banco.ctx_);
    LeDicionarioGravado(banco.ctx_);
    banco.dm_.SArquivoNovo.First();
    DesconsideraVersoesNegativas(banco.ctx_);
    EXPECT_NE(banco.Memo2().find("Tabela TCLI: a versão -1 do pacote não é válida"), std::string::npos);
    banco.Passo();
    EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2");
    EXPECT_EQ(banco.Clientes(), "1|ana;3|caio");
}

TEST(ReconstrucaoAbertaTest, TheTableObjectKeepsToTheSameRules) {
    TBancoDaBackup banco;
    TTB& tb = banco.dm_.Atualiza;
    banco.Executa("create table BTCLI (CODIGO integer, PEDIDO varchar(10))");
    EXPECT_FALSE(tb.CriaTabela("TCLI", true));
    EXPECT_NE(tb.Erro().mensagem.find("BTCLI não é um backup"), std::string::npos) << tb.Erro().mensagem;
    EXPECT_FALSE(tb.ReCriaTabela("TCLI"));
    EXPECT_EQ(banco.Le("select count(*) from BTCLI"), "0");
    banco.Executa("drop table BTCLI");
    ASSERT_TRUE(tb.ReCriaTabela("TCLI")) << tb.Erro().mensagem;
    EXPECT_EQ(MarcaDaBackup(banco.Conexao(), "BTCLI"), TMarcaDaBackup::Concluida);
    banco.ExecutaTudo({"update TCLI set NOME = 'mudou' where CODIGO = 1", "delete from TCLI where CODIGO = 2",
                       "update SARQUIVO set VERSAO = -1"});
    ASSERT_TRUE(tb.ReCriaTabela("TCLI")) << tb.Erro().mensagem;
    EXPECT_EQ(banco.Clientes(), "1|mudou;3|caio");
}

}  // namespace
}  // namespace wkd
