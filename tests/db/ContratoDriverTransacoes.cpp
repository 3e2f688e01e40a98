#include <chrono>
#include <stdexcept>
#include <thread>

#include "ContratoDriver.h"

namespace wkd {
namespace {

TEST_P(ContratoDriver, ATransactionThatIsNotCommittedLeavesNothing) {
    Executa("create table T (A integer)");
    auto insere = Conexao().Prepara("insert into T values (:pA)");
    const auto grava = [&](int a) {
        insere->Atribui("pA", a);
        insere->Executa();
    };
    {
        TTransacao transacao(Conexao());
        grava(1);
        EXPECT_THROW(Conexao().StartTransaction(), std::logic_error);
        EXPECT_THROW(Executa("insert into T values (9)"), std::logic_error);
    }
    EXPECT_FALSE(Conexao().InTransaction());
    {
        TTransacao transacao(Conexao());
        grava(2);
        Conexao().MarcaPonto("LINHA");
        grava(3);
        Conexao().VoltaAoPonto("LINHA");
        grava(4);
        transacao.Commit();
    }
    grava(5);
    EXPECT_EQ(Linhas("select A from T order by A"), "2,4,5");
}

TEST_P(ContratoDriver, AnUncommittedRowIsSeenInsideAndNotOutside) {
    Executa("create table T (A integer)");
    auto outra = banco_->Outra();
    TTransacao transacao(Conexao());
    Conexao().Prepara("insert into T values (1)")->Executa();
    EXPECT_EQ(Um("select count(*) from T").ComoInteiro(), 1);
    auto fora = outra->Prepara("select count(*) from T");
    fora->Abre();
    ASSERT_TRUE(fora->Proximo());
    EXPECT_EQ(fora->Valor(0).ComoInteiro(), 0);
}

TEST_P(ContratoDriver, TheTransactionOfAReservationDropsItsTableOrLeavesIt) {
    Executa("create table T (A integer)");
    Executa("create table U (A integer)");
    for (const bool confirma : {false, true}) {
        {
            TTransacao transacao(Conexao(), Conexao().Reserva("T"));
            Conexao().Prepara("insert into U values (1)")->Executa();
            Conexao().Prepara("drop table T")->Executa();
            if (confirma) transacao.Commit();
        }
        EXPECT_FALSE(Conexao().InTransaction());
        EXPECT_EQ(Conexao().ExisteTabela("T"), !confirma);
        EXPECT_EQ(Um("select count(*) from U").ComoInteiro(), confirma ? 1 : 0);
    }
    Executa("create table T (A integer, B integer)");
    EXPECT_EQ(Um("select count(*) from T").ComoInteiro(), 0);
}

TEST_P(ContratoDriver, CursorsStayOpenSideBySideWhileStatementsRun) {
    Executa("create table T (A integer not null primary key)");
    for (int i = 1; i <= 5; ++i) Executa("insert into T values (" + std::to_string(i) + ")");
    auto um = Conexao().Prepara("select A from T order by A");
    auto outro = Conexao().Prepara("select A from T where A > :pA order by A");
    auto apaga = Conexao().Prepara("delete from T where A = :pA");
    std::string lidos;
    for (um->Abre(); um->Proximo();) {
        outro->Atribui("pA", um->Valor(0));
        outro->Abre();
        lidos += um->Valor(0).ComoTexto() + (outro->Proximo() ? "<" + outro->Valor(0).ComoTexto() : "") + " ";
        TTransacao transacao(Conexao());
        apaga->Atribui("pA", um->Valor(0));
        apaga->Executa();
        transacao.Commit();
    }
    EXPECT_EQ(lidos, "1<2 2<3 3<4 4<5 5 ");
    EXPECT_EQ(Um("select count(*) from T").ComoInteiro(), 0);
    EXPECT_FALSE(um->Proximo());
}

TEST_P(ContratoDriver, ReadingLeavesNothingThatBlocksATableFromBeingDropped) {
    Executa("create table T (A integer not null primary key, B " + Tipo("blob sub_type 0") + ")");
    auto insere = Conexao().Prepara("insert into T values (:pA, :pB)");
    for (int i = 1; i <= 3; ++i) {
        insere->Atribui("pA", i);
        insere->Atribui("pB", TBytes{std::string(5000, 'x')});
        insere->Executa();
    }
    insere.reset();
    Conexao().Colunas("T");
    Conexao().Indices("T");
    auto comando = Conexao().Prepara("select B from T");
    comando->Abre();
    ASSERT_TRUE(comando->Proximo());
    const auto valor = comando->Valor(0);
    comando.reset();
    EXPECT_EQ(valor.ComoBytes().size(), 5000u);
    Executa("drop table T");
    EXPECT_TRUE(Conexao().NomesDeTabelas().empty());
}

TEST_P(ContratoDriver, TheObserverStandsBeforeEachStatementAndCommit) {
    Executa("create table T (A integer)");
    std::vector<std::string> vistos;
    std::string falhaEm;
    Conexao().Observa([&](std::string_view comando) {
        vistos.emplace_back(comando);
        if (comando == falhaEm) throw std::runtime_error("stop");
    });
    const std::string sql = "insert into T values (:pA)";
    auto insere = Conexao().Prepara(sql);
    insere->Atribui("pA", 1);
    insere->Executa();
    EXPECT_EQ(vistos, (std::vector<std::string>{sql, "commit"}));

    for (const auto* falha : {"insert into T values (:pA)", "commit", "delete from T"}) {
        SCOPED_TRACE(falha);
        falhaEm = falha;
        EXPECT_THROW((falhaEm == "delete from T" ? Executa(falhaEm) : void(insere->Executa())), std::runtime_error);
    }
    EXPECT_THROW(
        {
            falhaEm = "commit";
            TTransacao transacao(Conexao());
            insere->Executa();
            transacao.Commit();
        },
        std::runtime_error);
    EXPECT_FALSE(Conexao().InTransaction());
    Conexao().Observa(nullptr);
    EXPECT_EQ(Linhas("select A from T"), "1");
}

TEST_P(ContratoDriver, AFailedStatementLeavesItsTransactionToTheCallerAndItsOwnRolledBack) {
    Executa("create table T (A integer not null primary key)");
    auto insere = Conexao().Prepara("insert into T values (:pA)");
    insere->Atribui("pA", 1);
    insere->Executa();
    EXPECT_THROW(insere->Executa(), TErroBanco);
    TTransacao transacao(Conexao());
    insere->Atribui("pA", 2);
    insere->Executa();
    Conexao().MarcaPonto("P");
    insere->Atribui("pA", 1);
    EXPECT_THROW(insere->Executa(), TErroBanco);
    if (Conexao().InTransaction()) Conexao().VoltaAoPonto("P");
    transacao.Commit();
    EXPECT_EQ(Linhas("select A from T order by A"), "1,2");
}

TEST_P(ContratoDriver, OneConnectionHasTheLockAndTheOthersSeeWhoAndTheLockGoesWithIt) {
    if (!Completo()) GTEST_SKIP() << "a server without locks of its own";
    auto dela = banco_->Outra();
    auto outra = banco_->Outra();
    EXPECT_FALSE(outra->QuemTrava());
    ASSERT_TRUE(dela->Trava("eu em casa"));
    EXPECT_FALSE(outra->Trava("ela"));
    ASSERT_TRUE(outra->QuemTrava());
    EXPECT_NE(outra->QuemTrava()->find("eu em casa"), std::string::npos) << *outra->QuemTrava();
    dela->Anuncia("eu em TCLI_CON");
    EXPECT_NE(outra->QuemTrava()->find("TCLI_CON"), std::string::npos) << *outra->QuemTrava();
    Executa("create table T (A integer)");  // nobody's statements wait for it
    Executa("drop table T");
    dela->Close();
    bool tomada = outra->Trava("ela");
    for (int vez = 0; vez < 100 && !tomada; ++vez) {  // a server may see the end of a connection a moment later
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        tomada = outra->Trava("ela");
    }
    EXPECT_TRUE(tomada);
    dela->Open();
    EXPECT_FALSE(dela->Trava("eu em casa"));
    EXPECT_NE(dela->QuemTrava()->find("ela"), std::string::npos);
}

}  // namespace
}  // namespace wkd
