#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <thread>

#include <sys/resource.h>

#include "BancoTemporario.h"
#include "ContratoDriver.h"
#include "ServidorFirebird.h"
#include "dialect/Dialeto.h"
#include "firebird/ClienteFirebird.h"
#include "firebird/ConexaoFirebird.h"
#include "firebird/ErroFirebird.h"

namespace wkd {
namespace {

TErroBanco ErroAoAbrir(const TParametrosConexao& parametros) {
    const auto erro = ErroDe([&] { CriaConexaoFirebird(parametros)->Open(); });
    return erro.value_or(TErroBanco({}));
}

TEST(FirebirdConexao, AnOpeningThatFailsTellsWhy) {
    TPastaTemporaria pasta;
    std::ofstream(pasta / "texto.fdb") << std::string(9000, 'x');
    const struct {
        const char* caso;
        TParametrosConexao parametros;
        TFalha falha;
        const char* sqlstate;
    } casos[] = {
        {"missing file", ParametrosFirebird(pasta / "nada.fdb"), TFalha::BancoInexistente, "08001"},
        {"missing folder", ParametrosFirebird(pasta / "nada" / "nada.fdb"), TFalha::BancoInexistente, "08001"},
        {"unknown host", ParametrosFirebird(pasta / "nada.fdb", "nenhum.invalid"), TFalha::ServidorDesconhecido,
         "08006"},
        {"refused port", ParametrosFirebird(pasta / "nada.fdb", "127.0.0.1/" + std::to_string(PortaLivre())),
         TFalha::Conexao, "08006"},
        {"no database", ParametrosFirebird(pasta / "texto.fdb"), TFalha::NaoEBanco, "HY000"},
    };
    for (const auto& caso : casos) {
        const auto erro = ErroAoAbrir(caso.parametros);
        EXPECT_EQ(erro.SqlState(), caso.sqlstate) << caso.caso << ": " << erro.what();
        EXPECT_EQ(erro.Falha(), caso.falha) << caso.caso << ": " << erro.what();
        EXPECT_FALSE(erro.ConexaoPerdida()) << caso.caso;
    }
    TBancoTemporario banco;
    auto parametros = banco.Parametros();
    parametros.Adiciona("CharacterSet", "NADA");
    EXPECT_EQ(ErroAoAbrir(parametros).SqlState(), "2C000");
}

/// Names of files and objects hold what other errors say. Where a server can be brought to it, tests of the backup do.
TEST(FirebirdConexao, AFailureIsToldByItsCodesAndNotByItsWords) {
    const auto texto = [](const char* t) { return reinterpret_cast<ISC_STATUS>(t); };
    const ISC_STATUS arquivo = texto("/no permission/already opened/No space left on device.fdb");
    const struct {
        std::vector<ISC_STATUS> elementos;
        TFalha falha;
    } casos[] = {
        {{isc_login_error}, TFalha::Autenticacao},
        {{isc_service_att_err}, TFalha::SemServico},
        {{isc_service_not_supported}, TFalha::SemServico},
        {{isc_svcnotdef, isc_arg_string, texto("is in use")}, TFalha::SemServico},
        {{isc_insufficient_svc_privileges, isc_arg_string, texto("not supported")}, TFalha::SemPermissao},
        {{isc_gbak_db_exists, isc_arg_string, arquivo}, TFalha::BancoExistente},
        {{isc_gbak_unexp_eof}, TFalha::BackupCortado},
        {{isc_gbak_decomp_len_error}, TFalha::BackupCortado},
        {{isc_gbak_inv_bkup_ver2}, TFalha::NaoEBackup},
        {{isc_no_priv, isc_arg_string, texto("read-write"), isc_arg_string, texto("database"), isc_arg_string, arquivo},
         TFalha::BancoNegado},
        {{isc_no_priv, isc_arg_string, texto("DELETE"), isc_arg_string, texto("TABLE"), isc_arg_string,
          texto("remote")},
         TFalha::SemPermissao},
        {{isc_io_error, isc_arg_string, texto("open"), isc_arg_string, arquivo, isc_arg_gds, isc_io_open_err},
         TFalha::BancoInexistente},
        {{isc_io_error, isc_arg_string, texto("lock"), isc_arg_string, arquivo, isc_arg_gds, isc_already_opened},
         TFalha::EmUso},
        {{isc_io_error, isc_arg_string, texto("write"), isc_arg_string, arquivo, isc_arg_gds, isc_io_write_err,
          isc_arg_interpreted, texto("No space left on device")},
         TFalha::DiscoCheio},
    };
    for (const auto& caso : casos) {
        std::vector<ISC_STATUS> estado = {isc_arg_gds};
        estado.insert(estado.end(), caso.elementos.begin(), caso.elementos.end());
        estado.push_back(isc_arg_end);
        const auto erro = ErroFirebird(estado.data(), "");
        EXPECT_EQ(erro.Falha(), caso.falha) << erro.what();
    }
}

TEST(FirebirdConexao, AMissingOrForeignClientLibraryIsNamedWithWhatToInstall) {
    const struct {
        const char* lugar;
        const char* motivo;
    } casos[] = {{"/nao/existe/libfbclient.so.2", "cannot open shared object file"},
                 {"libm.so.6", "não tem a função fb_cancel_operation"}};
    for (const auto& [lugar, motivo] : casos) {
        const std::filesystem::path lugares[] = {lugar};
        try {
            CarregaClienteFirebird(lugares);
            ADD_FAILURE() << lugar;
        } catch (const TErroConfiguracao& erro) {
            const std::string_view texto = erro.what();
            for (const auto* parte : {"Instale o pacote libfbclient2", lugar, motivo})
                EXPECT_NE(texto.find(parte), std::string_view::npos) << parte << " in: " << texto;
        }
    }
    const std::filesystem::path depois[] = {"/nao/existe/libfbclient.so.2", "libfbclient.so.2"};
    EXPECT_NO_THROW(CarregaClienteFirebird(depois));
}

TEST(FirebirdConexao, AWrongPasswordIsToldFromAMissingDatabase) {
    if (!TServidorFirebird::Instalado()) GTEST_SKIP() << "no Firebird server installed";
    TBancoTemporario banco("UTF8", TServidorFirebird::DoProcesso().Endereco());
    TParametrosConexao parametros;
    parametros.Adiciona("User_Name", "SYSDBA");
    parametros.Adiciona("Password", "errada");
    parametros.Adiciona("Database", banco.Parametros().Valor("Database"));
    const auto erro = ErroAoAbrir(parametros);
    EXPECT_EQ(erro.Falha(), TFalha::Autenticacao) << erro.what();
    EXPECT_EQ(erro.SqlState(), "28000");
}

TEST(FirebirdConexao, ADatabaseInUseClosedOrForbiddenIsToldFromAMissingOne) {
    if (!TServidorFirebird::Instalado()) GTEST_SKIP() << "no Firebird server installed";
    TBancoTemporario banco("UTF8", TServidorFirebird::DoProcesso().Endereco());
    const std::string onde = banco.Parametros().Valor("Database");
    const auto falha = [&](const std::string& database, const char* usuario = "SYSDBA") {
        TParametrosConexao parametros;
        for (const auto& [chave, valor] : {std::pair("User_Name", usuario), {"Password", "masterkey"}})
            parametros.Adiciona(chave, valor);
        parametros.Adiciona("Database", database);
        return ErroAoAbrir(parametros).Falha();
    };
    EXPECT_EQ(falha(onde + "x"), TFalha::BancoInexistente);
    const std::string arquivo = onde.substr(onde.find(':') + 1);
    if (std::getenv("WKD_FIREBIRD4_CLIENTE") == nullptr) {  // that client has no engine with it
        EXPECT_EQ(falha(arquivo), TFalha::EmUso) << "by the embedded engine, while the server has it";
    }
    banco.Conexao().ExecuteDirect("create or alter user ANA password 'masterkey'");
    banco.Conexao().Close();
    const auto gfix = [&](const std::string& como) {
        return std::system(("gfix -user SYSDBA -password masterkey " + como + " " + onde).c_str());
    };
    ASSERT_EQ(gfix("-shut full -force 0"), 0);
    EXPECT_EQ(falha(onde, "ANA"), TFalha::BancoFechado);
    ASSERT_EQ(gfix("-online"), 0);
    EXPECT_EQ(falha(onde, "ANA"), TFalha::Outra) << "it opens";
}

TEST(FirebirdConexao, TheLockKeepsOutUsersWhoAreNotShownEachOther) {
    if (!TServidorFirebird::Instalado()) GTEST_SKIP() << "no Firebird server installed";
    for (const auto& [primeiro, segundo] : {std::pair("ANA", "BIA"), {"BIA", "ANA"}}) {
        SCOPED_TRACE(std::string(primeiro) + " before " + segundo);
        TBancoTemporario banco("UTF8", TServidorFirebird::DoProcesso().Endereco());
        for (const char* nome : {"ANA", "BIA"})
            banco.Conexao().ExecuteDirect("create or alter user " + std::string(nome) + " password 'masterkey'");
        banco.Conexao().ExecuteDirect("grant create table to ANA");
        const auto liga = [&](const char* usuario) {
            TParametrosConexao parametros;
            for (const auto& [chave, valor] : {std::pair("User_Name", usuario), {"Password", "masterkey"}})
                parametros.Adiciona(chave, valor);
            parametros.Adiciona("Database", banco.Parametros().Valor("Database"));
            auto conexao = CriaConexaoFirebird(parametros);
            conexao->Open();
            return conexao;
        };
        if (primeiro == std::string("BIA")) {  // who may make no table finds the one of an earlier run
            ASSERT_TRUE(liga("ANA")->Trava("ana"));
            for (int vez = 0; vez < 100 && banco.Conexao().QuemTrava(); ++vez)
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        auto dela = liga(primeiro), outra = liga(segundo);
        EXPECT_EQ(outra->QuemTrava(), std::nullopt);
        ASSERT_TRUE(dela->Trava("ela"));
        EXPECT_EQ(outra->QuemTrava(), "");
        EXPECT_FALSE(outra->Trava("outra"));
        EXPECT_NE(banco.Conexao().QuemTrava().value_or("").find("ela (usuário " + std::string(primeiro)),
                  std::string::npos);
        banco.Conexao().ExecuteDirect("create table T (A integer)");
        EXPECT_EQ(banco.Conexao().NomesDeTabelas(), std::vector<std::string>{"T"});
        EXPECT_EQ(banco.Conexao().TodasAsColunas().size(), 1u);
        const auto proibida = ErroDe([&] { outra->ExecuteDirect("alter table T add B integer"); });
        ASSERT_TRUE(proibida);
        EXPECT_EQ(proibida->Falha(), TFalha::SemPermissao) << proibida->what();
        dela->Close();
        EXPECT_TRUE(outra->Trava("outra"));
    }
}

TEST(FirebirdConexao, AServerThatNeverAnswersIsGivenUp) {
    TPortaMuda porta;
    auto parametros = ParametrosFirebird("/nada.fdb", "127.0.0.1/" + std::to_string(porta.Numero()));
    parametros.Adiciona("ConnectTimeout", "1");
    EXPECT_EQ(ErroAoAbrir(parametros).Falha(), TFalha::Conexao);
}

TEST(FirebirdConexao, ALostServerIsToldAsALostConnection) {
    if (!TServidorFirebird::Instalado()) GTEST_SKIP() << "no Firebird server installed";
    auto servidor = std::make_unique<TServidorFirebird>();
    TBancoTemporario banco("UTF8", servidor->Endereco());
    banco.Conexao().ExecuteDirect("create table T (A integer)");
    auto insere = banco.Conexao().Prepara("insert into T values (1)");
    servidor.reset();
    const auto erro = ErroDe([&] { insere->Executa(); });
    ASSERT_TRUE(erro);
    EXPECT_TRUE(erro->ConexaoPerdida()) << erro->SqlState() << erro->what();
    EXPECT_EQ(erro->Falha(), TFalha::Conexao);
}

TEST(FirebirdConexao, WhatATableHoldsOnToIsToldFromATableAlteredTooOften) {
    TBancoTemporario banco;
    auto& conexao = banco.Conexao();
    conexao.ExecuteDirect("create table TPACOTE (A integer, B varchar(10))");
    conexao.ExecuteDirect("create view V as select A from TPACOTE");
    const auto presa = ErroDe([&] { conexao.ExecuteDirect("alter table TPACOTE drop A"); });
    ASSERT_TRUE(presa);
    EXPECT_EQ(presa->Falha(), TFalha::Dependencia) << presa->what();
    const auto gasta = ErroDe([&] {
        for (int n = 11; n < 300; ++n)
            conexao.ExecuteDirect("alter table TPACOTE alter B type varchar(" + std::to_string(n) + ")");
    });
    ASSERT_TRUE(gasta);
    EXPECT_EQ(gasta->Falha(), TFalha::VersoesDemais) << gasta->what();
}

TEST(FirebirdConexao, ADiskWithoutRoomIsToldFromALostServer) {
    if (!ServidorDosTestes().empty()) GTEST_SKIP() << "the limit is this process's, which does not write the file";
    TBancoTemporario banco;
    banco.Conexao().ExecuteDirect("create table T (A varchar(8000) character set octets)");
    rlimit antes{};
    getrlimit(RLIMIT_FSIZE, &antes);
    rlimit cheio = antes;
    cheio.rlim_cur = std::filesystem::file_size(banco.Arquivo());
    std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &cheio);
    const auto erro = ErroDe([&] {
        banco.Conexao().ExecuteDirect(
            "execute block as declare i integer = 0; begin while (i < 4000) do begin insert into T values "
            "(rpad(gen_uuid(), 8000, gen_uuid())); i = i + 1; end end");
    });
    setrlimit(RLIMIT_FSIZE, &antes);
    std::signal(SIGXFSZ, SIG_DFL);
    ASSERT_TRUE(erro);
    EXPECT_EQ(erro->Falha(), TFalha::DiscoCheio) << erro->what();
    EXPECT_TRUE(erro->ConexaoPerdida()) << "nothing more is to be written";
}

TEST(FirebirdConexao, AFailedNotNullColumnLeavesTheConnectionAbleToWrite) {
    TBancoTemporario banco;
    auto& conexao = banco.Conexao();
    conexao.ExecuteDirect("create table T (A integer)");
    auto insere = conexao.Prepara("insert into T values (:pA)");
    auto le = conexao.Prepara("select A from T order by A");
    insere->Atribui("pA", 1);
    insere->Executa();
    le->Abre();
    const auto erro = ErroDe([&] { conexao.ExecuteDirect("alter table T add B integer not null"); });
    ASSERT_TRUE(erro);
    EXPECT_EQ(erro->SqlState(), "22006");
    EXPECT_EQ(erro->Comando(), "alter table T add B integer not null");
    insere->Executa();
    insere->Atribui("pA", 2);
    insere->Executa();
    le->Abre();
    int linhas = 0;
    while (le->Proximo()) ++linhas;
    EXPECT_EQ(linhas, 3);
}

TEST(FirebirdConexao, ATimeFinerThanTheServersIsRefused) {
    TBancoTemporario banco;
    banco.Conexao().ExecuteDirect("create table T (A timestamp)");
    auto insere = banco.Conexao().Prepara("insert into T values (:pA)");
    insere->Atribui("pA", TDataHora{DataDe(2024, 1, 1), {1}});
    try {
        insere->Executa();
        FAIL() << "a tick of 100 ns was taken";
    } catch (const TErroConversao& erro) {
        EXPECT_NE(std::string(erro.what()).find("pA"), std::string::npos);
    }
}

TEST(FirebirdConexao, BlocksAndReturningStatementsTakeParametersAndGiveRows) {
    TBancoTemporario banco;
    auto& conexao = banco.Conexao();
    conexao.ExecuteDirect("create table T (A integer not null primary key, B integer)");
    auto bloco = conexao.Prepara(
        "execute block (k integer = :pK) as declare variable v integer; begin"
        " select coalesce(max(A), 0) from T into :v; insert into T values (:v + 1, :k); end");
    EXPECT_EQ(bloco->Parametros(), std::vector<std::string>{"pK"});
    for (int i = 10; i <= 20; i += 10) {
        bloco->Atribui("pK", i);
        bloco->Executa();
    }
    auto devolve = conexao.Prepara("insert into T select max(A) + 1, :pB from T returning A");
    devolve->Atribui("pB", 30);
    devolve->Abre();
    ASSERT_TRUE(devolve->Proximo());
    EXPECT_EQ(devolve->Valor(0).ComoInteiro(), 3);
    EXPECT_FALSE(devolve->Proximo());
    auto outra = banco.Outra();
    auto le = outra->Prepara("select list(A || ':' || B) from T");
    le->Abre();
    ASSERT_TRUE(le->Proximo());
    EXPECT_EQ(le->Valor(0).ComoTexto(), "1:10,2:20,3:30");
}

TEST(FirebirdConexao, AReservedTableTakesNoRowUntilItsRelease) {
    TBancoTemporario banco;
    auto& conexao = banco.Conexao();
    conexao.ExecuteDirect("create table T (A integer)");
    conexao.ExecuteDirect("create table U (A integer)");
    auto outra = banco.Outra();
    auto reserva = conexao.Reserva("t");
    outra->ExecuteDirect("insert into U values (1)");
    const auto erro = ErroDe([&] { outra->ExecuteDirect("insert into T values (1)"); });
    ASSERT_TRUE(erro);
    EXPECT_EQ(erro->Falha(), TFalha::EmUso) << erro->what();
    auto le = conexao.Prepara("select count(*) from T");
    le->Abre();
    ASSERT_TRUE(le->Proximo());
    EXPECT_EQ(le->Valor(0).ComoInteiro(), 0);
    le.reset();
    reserva.reset();
    outra->ExecuteDirect("insert into T values (1)");
    outra.reset();
    conexao.ExecuteDirect("drop table T");
}

TEST(FirebirdConexao, TheCatalogueKeepsWhatACopyOfATableNeeds) {
    TBancoTemporario banco("WIN1252");
    auto& conexao = banco.Conexao();
    conexao.ExecuteDirect("create domain D as numeric(9,3) default 2.5 not null");
    conexao.ExecuteDirect(
        "create table T (A D, B decimal(18,0), C varchar(10) character set UTF8, E char(4) character set octets,"
        " F blob sub_type 1 character set NONE, G computed by (A * 2), H varchar(9) default 'ação')");
    conexao.ExecuteDirect("create index IX on T computed by (upper(C))");
    conexao.ExecuteDirect("create view V as select A from T");
    conexao.ExecuteDirect("create table \"mista\" (A integer)");
    std::string texto;
    for (const auto& c : conexao.Colunas("T"))
        texto += c.nome + "=" + c.tipoSql + "/" + c.padrao + "/" + c.expressao + (c.requerido ? "! " : " ");
    EXPECT_EQ(texto,
              "A=numeric(9,3)/2.5/! B=decimal(18,0)// C=varchar(10) character set UTF8// "
              "E=char(4) character set OCTETS// F=blob sub_type 1 character set NONE// G=numeric(18,3)//(A * 2) "
              "H=varchar(9)/'ação'/ ");
    ASSERT_EQ(conexao.Indices("T").size(), 1u);
    EXPECT_EQ(conexao.Indices("T")[0].expressao, "(upper(C))");
    EXPECT_EQ(conexao.NomesDeTabelas(), (std::vector<std::string>{"T", "mista"}));
    EXPECT_EQ(conexao.Colunas("MISTA").size(), 1u);
    const std::string longa = "('" + std::string(1500, 'x') + "')";
    conexao.ExecuteDirect("alter table T add I computed by " + longa);
    EXPECT_EQ(conexao.Colunas("T").back().expressao, longa);
    EXPECT_EQ(conexao.VersaoServidor().rfind("Firebird ", 0), 0u);
}

TEST(FirebirdConexao, ItsDialectKnowsTheServerWithoutAskingByStatement) {
    TBancoTemporario banco;
    auto conexao = CriaConexaoFirebird(banco.Parametros());
    int comandos = 0;
    conexao->Observa([&](std::string_view) { ++comandos; });
    EXPECT_EQ(Dialeto(*conexao).Capacidades().versao, 0) << "not open yet";
    conexao->Open();
    comandos = 0;
    const TCapacidades& sabe = Dialeto(*conexao).Capacidades();
    EXPECT_EQ(comandos, 0);
    EXPECT_EQ("Firebird " + sabe.servidor, conexao->VersaoServidor());
    EXPECT_NE(sabe.cliente.find("Firebird " + TextoDaVersao(sabe.versaoDoCliente)), std::string::npos) << sabe.cliente;
    EXPECT_EQ(sabe.estrutura / 100, sabe.versao >= 400 ? 13 : 12);
    EXPECT_EQ(sabe.estruturaDoServidor / 100, sabe.estrutura / 100);
    EXPECT_EQ(sabe.pagina, 8192);
    EXPECT_EQ(sabe.dialeto, 3);
    EXPECT_NE(sabe.arquivo, "");
    EXPECT_EQ(sabe.Tem(TRecurso::TiposDo4), sabe.versao >= 400);
    EXPECT_TRUE(sabe.Tem(TRecurso::MonitorCompleto));
}

}  // namespace
}  // namespace wkd
