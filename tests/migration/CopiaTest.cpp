#ifndef _WIN32
#include <unistd.h>
#endif

#include <fstream>
#include <utility>

#include "NovaApoio.h"
#include "copy/CopiaDeLinhas.h"

namespace wkd {
namespace {

const TAtributos kColunas = {{"CODIGO", "ftInteger", 0, 1}, {"NOME", "ftString", 20}};

struct TBancoDaCopia : TBancoDaNova {
    explicit TBancoDaCopia(int linhas, int chave = 1) {
        TAtributos colunas = kColunas;
        colunas[0].chave = chave;
        Guardada("TCLI", colunas);
        Executa("create table TCLI (CODIGO integer not null, NOME varchar(20)" +
                std::string(chave == 1 ? ", constraint PK_TCLI primary key (CODIGO))" : ")"));
        std::vector<std::string> comandos;
        for (int i = 1; i <= linhas; ++i)
            comandos.push_back("insert into TCLI values (" + std::to_string(i) + ", 'nome')");
        ExecutaTudo(comandos);
        Pacote("TCLI", colunas);
    }
};

TErroBanco Recusa() { return TErroBanco({"recusado", 0, "HY000", "", TFalha::Outra, false}); }

TEST(CopiaTest, BackupCommitsEvery100RowsAndRestoreEvery11) {
    for (const int compridas : {0, 50}) {  // rows that need the client, between others that the server moves
        TBancoDaCopia banco(250);
        if (compridas > 0) {
            banco.Executa("update TCLI set NOME = 'quinze letras..' where mod(CODIGO, 5) = 0");
            banco.Pacote("TCLI", {{"CODIGO", "ftInteger", 0, 1}, {"NOME", "ftString", 10}});
        }
        int comandos = 0;
        banco.Conexao().Observa([&](std::string_view sql) { comandos += Insere(sql, "BTCLI"); });
        banco.Reconstroi();
        EXPECT_EQ(comandos, 3) << "one for each batch";
        const auto lotes = [&](const std::string& tabela) {
            return banco.Le("select count(*) from " + tabela + " group by rdb$record_version order by min(CODIGO)");
        };
        std::string onze;
        for (int lote = 0; lote < 22; ++lote) onze += "11;";
        EXPECT_EQ(lotes("BTCLI"), "100;100;50");
        EXPECT_EQ(lotes("TCLI"), onze + "8");
        EXPECT_EQ(banco.Le("select count(*) from TCLI where NOME is null"), std::to_string(compridas));
        EXPECT_GE(banco.tela_.mensagensServidas, 500);
    }
}

TEST(CopiaTest, RowsThatPassTheClientAreNoStatementEach) {
    for (const bool cabem : {true, false}) {
        TBancoDaCopia banco(250);
        banco.Executa("update TCLI set NOME = CODIGO");
        if (!cabem) banco.Executa("update TCLI set NOME = 'sete' where CODIGO = 7");
        banco.Pacote("TCLI", {{"CODIGO", "ftInteger", 0, 1}, {"NOME", "ftInteger"}});
        int comandos = 0, commits = 0;
        banco.Conexao().Observa([&](std::string_view sql) {
            comandos += Insere(sql, "TCLI");
            commits += comandos > 0 && sql == "commit";
        });
        banco.Reconstroi();
        EXPECT_EQ(comandos, cabem ? 23 : 22 + 11) << "one a batch; of one with an unfit row, its rows";
        EXPECT_GE(commits, 23);
        EXPECT_EQ(banco.Le("select count(*), sum(iif(NOME = CODIGO, 1, 0)) from TCLI"), cabem ? "250|250" : "250|249");
        EXPECT_EQ(banco.Rejeitados().find("sete") != std::string::npos, !cabem);
        EXPECT_EQ(banco.Le("select count(*) from (select 1 as N from TCLI group by rdb$record_version) lotes"), "23");
    }
}

/// Every second name and the first ten numbers are missing.
TEST(CopiaTest, WhatTheServerCompletesIsNoStatementEach) {
    TBancoDaNova banco;
    banco.Guardada("TCLI", {{"CODIGO", "ftInteger"}, {"NOME", "ftString", 20}});
    banco.Executa("create table TCLI (CODIGO integer, NOME varchar(20))");
    banco.Executa(
        "execute block as declare i integer = 0; begin while (i < 250) do begin i = i + 1; insert into TCLI values"
        " (iif(:i <= 10, iif(mod(:i, 2) = 0, 0, null), :i), iif(mod(:i, 2) = 0, 'nome', null)); end end");
    banco.Pacote("TCLI", {{"CODIGO", "ftInteger", 0, 1, "", 0, 1}, {"NOME", "ftString", 20, 1}});
    int comandos = 0;
    banco.Conexao().Observa([&](std::string_view sql) { comandos += Insere(sql, "TCLI"); });
    banco.Reconstroi();
    EXPECT_EQ(comandos, 23) << "one a batch";
    EXPECT_EQ(banco.Le("select count(distinct CODIGO), min(CODIGO), max(CODIGO) from TCLI"), "250|1|250");
    EXPECT_EQ(banco.Le("select NOME, count(*) from TCLI group by NOME"), "0|125;nome|125");
    EXPECT_EQ(banco.Le("select first 4 CODIGO, NOME from TCLI"), "1|0;2|nome;3|0;4|nome");
    EXPECT_TRUE(banco.tela_.memo2.empty()) << Junta(banco.tela_.memo2, "\n");
    EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2");
}

/// What a rebuild, or a loop, costs the database.
struct TCusto {
    std::int64_t transacoes = 0, paginas = 0;  // begun, and written

    template <class TTrabalho>
    static TCusto De(TBancoDaCopia& banco, TTrabalho&& trabalho) {
        const auto le = [&] {
            const auto comando = banco.Conexao().Prepara(
                "select mon$next_transaction, (select mon$page_writes from mon$io_stats where mon$stat_group = 0)"
                " from mon$database");
            comando->Abre();
            comando->Proximo();
            return TCusto{comando->Valor(0).ComoInteiro(), comando->Valor(1).ComoInteiro()};
        };
        const TCusto antes = le();
        trabalho();
        const TCusto depois = le();
        return {depois.transacoes - antes.transacoes, depois.paginas - antes.paginas};
    }
};

/// The rows of one table to another, `porLote` in a transaction, and nothing else.
void CopiaCrua(TBancoDaCopia& banco, const std::string& origem, const std::string& destino, int linhas, int porLote) {
    const auto lote = banco.Conexao().Prepara("insert into " + destino + " select * from " + origem +
                                              " where CODIGO > :DE and CODIGO <= :ATE");
    for (int de = 0; de < linhas; de += porLote) {
        TTransacao transacao(banco.Conexao());
        lote->Atribui("DE", de);
        lote->Atribui("ATE", de + porLote);
        lote->Executa();
        transacao.Commit();
    }
}

TEST(CopiaTest, ABatchTakesOneTransactionAndThePagesOfItsRows) {
    constexpr int kPoucas = 1100, kMuitas = 5500;
    constexpr int kLotes = (kMuitas - kPoucas) / 100 + (kMuitas - kPoucas) / 11;
    for (const int chave : {1, 0}) {  // without a key, the restore keeps count in the transactions of its rows
        const auto reconstrucao = [&](int linhas) {
            TBancoDaCopia banco(linhas, chave);
            return TCusto::De(banco, [&] { banco.Reconstroi(); });
        };
        const auto laco = [&](int linhas) {
            TBancoDaCopia banco(linhas);
            banco.Executa("create table IDA (CODIGO integer, NOME varchar(20))");
            banco.Executa("create table VOLTA (CODIGO integer not null primary key, NOME varchar(20))");
            return TCusto::De(banco, [&] {
                CopiaCrua(banco, "TCLI", "IDA", linhas, 100);
                banco.Executa("create index IDA_CODIGO on IDA (CODIGO)");
                CopiaCrua(banco, "IDA", "VOLTA", linhas, 11);
            });
        };
        const TCusto muitas = reconstrucao(kMuitas), poucas = reconstrucao(kPoucas);
        EXPECT_EQ(muitas.transacoes - poucas.transacoes, kLotes);
        if (chave == 0) continue;
        const auto nossas = static_cast<double>(muitas.paginas - poucas.paginas);
        EXPECT_LE(nossas, 1.1 * static_cast<double>(laco(kMuitas).paginas - laco(kPoucas).paginas));
        EXPECT_GT(nossas, 3 * kLotes) << "header, rows and state of each transaction";
    }
}

TEST(CopiaTest, ABatchWhoseCommitFailsIsStoredRowByRow) {
    TBancoDaCopia banco(150);
    int commits = 0;
    bool copiando = false;
    banco.Conexao().Observa([&](std::string_view sql) {
        copiando = copiando || Insere(sql, "BTCLI");
        if (copiando && sql == "commit" && ++commits == 1) throw Recusa();
    });
    banco.Reconstroi();
    EXPECT_GT(commits, 100);
    EXPECT_EQ(banco.Le("select count(*), count(distinct CODIGO) from TCLI"), "150|150");
    EXPECT_TRUE(banco.tela_.memo2.empty()) << Junta(banco.tela_.memo2, "\n");
}

TEST(CopiaTest, ARowThatTheBackupRefusesEndsTheRebuildBeforeTheDrop) {
    for (const int chave : {1, 0}) {
        for (const bool gravavel : {true, false}) {
            SCOPED_TRACE((chave == 1 ? "with key, " : "without key, ") + std::string(gravavel ? "with" : "without") +
                         " rejects file");
            TBancoDaCopia banco(30, chave);
            if (!gravavel) banco.opcoes_.pastaPrograma = banco.Pasta() / "não existe";
            int insercoes = 0;
            banco.Conexao().Observa([&](std::string_view sql) {
                if (!Insere(sql, "BTCLI")) return;
                ++insercoes;  // the batch, then its rows one by one
                if (insercoes == 1 || insercoes == 8 || insercoes == 9) throw Recusa();
            });
            banco.Reconstroi();
            banco.Conexao().Observa({});
            EXPECT_EQ(banco.tela_.infos, std::vector<std::string>{"recusado"});
            EXPECT_EQ(banco.tela_.reconciliacoes.size(), gravavel ? 1U : 0U);
            EXPECT_EQ(banco.Le("select count(*) from TCLI"), "30");
            EXPECT_TRUE(banco.estado_.falhouApagar);
            EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "1");
            EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "Tabela TCLI não reconstruída"));
            EXPECT_EQ(banco.Rejeitados().find("\"valores\": {\"CODIGO\": 7, \"NOME\": \"nome\"}") != std::string::npos,
                      gravavel);
            banco.Reconstroi();
            EXPECT_EQ(banco.Le("select count(*), (select VERSAO from SARQUIVO) from TCLI"), "30|2");
        }
    }
}

TEST(CopiaTest, WhatTheRejectsFileCannotTakeKeepsTheRebuildOpen) {
    for (const int chave : {1, 0}) {
        for (const bool recusada : {true, false}) {
            SCOPED_TRACE((chave == 1 ? "with key, " : "without key, ") + std::string(recusada ? "a row" : "a value"));
            TBancoDaCopia banco(30, chave);
            if (!recusada) {
                banco.Executa("update TCLI set NOME = 'quinze letras..' where CODIGO = 7");
                banco.Pacote("TCLI", {{"CODIGO", "ftInteger", 0, chave}, {"NOME", "ftString", 10}});
            }
            banco.opcoes_.pastaPrograma = banco.Pasta() / "não existe";
            int insercoes = 0;
            banco.Conexao().Observa([&](std::string_view sql) {
                if (!recusada || !Insere(sql, "TCLI")) return;
                ++insercoes;  // the batch, then its rows one by one
                if (insercoes == 1 || insercoes == 8 || insercoes == 9) throw Recusa();
            });
            banco.Reconstroi();
            banco.Conexao().Observa({});
            EXPECT_TRUE(banco.estado_.falhouApagar);
            EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "-1");
            // Where the count goes on from a row, the rows behind it wait for it.
            EXPECT_EQ(banco.Le("select count(*) from TCLI"), chave == 1 ? "29" : "0");
            EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "BTCLI")) << Junta(banco.tela_.memo2, "\n");

            banco.opcoes_.pastaPrograma = banco.Pasta();
            banco.Reconstroi();
            EXPECT_FALSE(banco.estado_.falhouApagar);
            EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2");
            EXPECT_EQ(banco.Le("select count(*), count(distinct CODIGO), count(NOME) from TCLI"),
                      recusada ? "30|30|30" : "30|30|29");
            EXPECT_EQ(banco.Rejeitados().find("quinze letras..") != std::string::npos, !recusada);
        }
    }
}

TEST(CopiaTest, ManyRefusedRowsAreShownAHundredTimesAndAllKept) {
    TBancoDaCopia banco(150, 0);
    banco.Executa("update TCLI set CODIGO = 1");
    banco.Pacote("TCLI", kColunas);
    banco.Reconstroi();
    EXPECT_EQ(banco.Le("select count(*) from TCLI"), "1");
    EXPECT_EQ(banco.tela_.infos.size(), 100U);
    EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "mais 49 registros")) << Junta(banco.tela_.memo2, "\n");
    EXPECT_TRUE(banco.tela_.LogContem("mais 49 registros"));
    EXPECT_EQ(std::ranges::count(banco.Rejeitados(), '\n'), 149);
}

TEST(CopiaTest, RowsThatTakeMuchRoomHereAreCommittedEarly) {
    TBancoDaCopia banco(10);
    banco.Executa("create table BTCLI (CODIGO integer, NOME blob)");
    TRenumeracao renumeracao(banco.dm_.SatribNovo);
    TCopia copia{
        .tabela = "TCLI", .origem = "TCLI", .destino = "BTCLI", .chave = {}, .etapa = "teste", .bytesPorLote = 3 * 4};
    const auto resultado = TCopiaDeLinhas(banco.ctx_, copia, renumeracao).Executa(10);
    EXPECT_EQ(resultado.gravadas, 10);
    EXPECT_EQ(banco.Le("select count(*) from BTCLI group by rdb$record_version order by min(CODIGO)"), "3;3;3;1");
}

TEST(CopiaTest, ATextThatBecomesABlobKeepsItsBytes) {
    for (const char* conjunto : {"WIN1252", "ISO8859_1"}) {
        TBancoDaNova banco(conjunto);
        banco.Guardada("TCLI", kColunas);
        banco.Executa("create table TCLI (CODIGO integer not null primary key, NOME varchar(20))");
        banco.Executa("insert into TCLI values (1, _" + std::string(conjunto) + " x'E78580')");
        banco.Pacote("TCLI", {{"CODIGO", "ftInteger", 0, 1}, {"NOME", "ftBlob"}});
        banco.Reconstroi();
        EXPECT_EQ(banco.Le("select count(*) from TCLI where NOME = x'E78580'"), "1")
            << conjunto << Junta(banco.tela_.memo2, "\n");
        EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2");
    }
}

TEST(CopiaTest, ARestoreThatBreaksOffIsDoneAgainByTheNextRun) {
    TBancoDaCopia banco(40);
    int insercoes = 0;
    banco.Conexao().Observa([&](std::string_view sql) {
        if (Insere(sql, "TCLI") && ++insercoes > 2) throw TErroBanco({"caiu", 0, "08006", "", TFalha::Conexao, true});
    });
    EXPECT_THROW(banco.Reconstroi(), TErroBanco);
    banco.Conexao().Observa({});
    EXPECT_TRUE(banco.estado_.falhouApagar);
    EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "-1");
    EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.infos, "Problema voltando backup da tabela : TCLI"));
    banco.Reconstroi();
    EXPECT_EQ(banco.Le("select count(*), count(distinct CODIGO) from TCLI"), "40|40");
    EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2");
}

#ifndef _WIN32
long KiloBytesResidentes() {
    long total = 0, residentes = 0;
    std::ifstream("/proc/self/statm") >> total >> residentes;
    return residentes * (sysconf(_SC_PAGESIZE) / 1024);
}

TEST(CopiaTest, MemoryDoesNotGrowWithTheRows) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer keeps freed memory back";
#endif
    const auto depoisDe = [](int linhas) {
        TBancoDaCopia banco(0);
        banco.Executa("alter table TCLI add TEXTO varchar(3000) character set WIN1252");
        banco.Executa("alter table TCLI add FOTO blob");
        banco.Executa("execute block as declare i integer = 0; begin while (i < " + std::to_string(linhas) +
                      ") do begin i = i + 1; insert into TCLI values (:i, 'x', rpad('', 3000, 'abc'), rpad('', 2000, "
                      "'z')); end end");
        banco.tela_.guardaRotulos = false;
        banco.Reconstroi();
        EXPECT_EQ(banco.Le("select count(*) from TCLI"), std::to_string(linhas));
        EXPECT_TRUE(banco.tela_.memo2.size() == 1) << Junta(banco.tela_.memo2, "\n");
        return KiloBytesResidentes();
    };
    depoisDe(4000);  // fills the engine's page cache
    const long antes = depoisDe(4000);
    EXPECT_LT(depoisDe(20000) - antes, 12 * 1024) << "80 MB went through";
}
#endif

}  // namespace
}  // namespace wkd
