#include <gtest/gtest.h>

#include "aliases/ArquivoIni.h"
#include "odbc/ConexaoOdbc.h"
#include "odbc/ErroOdbc.h"
#include "odbc/LexicoSql.h"

namespace wkd {
namespace {

TEST(OdbcTextos, EscapeSequencesLoseTheirBracesOutsideQuotedTexts) {
    const struct {
        const char *entra, *sai;
    } casos[] = {
        {R"(DELETE FROM T WHERE N LIKE 'U\_%' {ESCAPE '\'} AND A = 'B')",
         R"(DELETE FROM T WHERE N LIKE 'U\_%'  ESCAPE '\' AND A = 'B')"},
        {R"(LIKE 'U\_%' { escape '\' })", R"(LIKE 'U\_%'  escape '\' )"},
        {"A > {ts '2024-02-29 10:00:00'}", "A > '2024-02-29 10:00:00'"},
        {"A = {d'2024-02-29'} and B = {t '10:00'}", "A = '2024-02-29' and B = '10:00'"},
        {R"(A = '{ESCAPE ''\''}' -- {d '1'})", R"(A = '{ESCAPE ''\''}' -- {d '1'})"},
        {R"([a{d '1'}] "{d '1'}" /*{d '1'}*/)", R"([a{d '1'}] "{d '1'}" /*{d '1'}*/)"},
        {"{fn now()} {d 1} {ESCAPE '", "{fn now()} {d 1} {ESCAPE '"},
    };
    const auto semBrancos = [](std::string texto) {
        std::erase(texto, ' ');
        return texto;
    };
    for (const auto& caso : casos) EXPECT_EQ(semBrancos(SemSequenciasOdbc(caso.entra)), semBrancos(caso.sai));
}

TEST(OdbcTextos, AParameterIsMatchedWithTheColumnThatStoresIt) {
    const struct {
        const char *sql, *esperado;  // table, then a column or place for every "?"; "-" for none
    } casos[] = {
        {"insert into T (A,[B c],\"D\") values (?, ?,?)", "T A B c D"},
        {"INSERT INTO dbo.T VALUES (?,1,?)", "T 0 2"},
        {"insert into [dbo].[T] (A,B) values (? + 1,upper(?)),(?,?)", "T - - A B"},
        {"insert into T (A, B) select ?, A from X where B = ?", "T - -"},
        {"update T set A = ?, B=?,C = C + ?, D = (?) where E = ?", "T A B - - -"},
        {"update T set A = ? from T inner join X on X.B = ?", "T A -"},
        {"select A from T where A = ? and B in (?)", " - -"},
        {"update T set A = '?', B = ? -- ?", "T B"},
    };
    for (const auto& caso : casos) {
        const auto alvos = AlvosDosParametros(caso.sql);
        std::string texto = alvos.tabela;
        for (const auto& alvo : alvos.alvos)
            texto += " " + (alvo.posicao ? std::to_string(*alvo.posicao) : alvo.coluna.empty() ? "-" : alvo.coluna);
        EXPECT_EQ(texto, caso.esperado) << caso.sql;
    }
}

TParametrosConexao Parametros(std::string_view servidor, std::string_view senha, std::string_view driver = "") {
    TParametrosConexao parametros;
    parametros.Adiciona("Server", servidor);
    parametros.Adiciona("Database", "EMPRESA");
    parametros.Adiciona("User_Name", "sa");
    parametros.Adiciona("Password", senha);
    if (!driver.empty()) parametros.Adiciona("Driver", driver);
    return parametros;
}

TEST(OdbcTextos, TheConnectionStringNamesTheFirstInstalledDriverAndQuotesItsValues) {
    const std::string banco = "DATABASE=EMPRESA;UID=sa;PWD=";
    const struct {
        TParametrosConexao parametros;
        std::vector<std::string> instalados;
        std::string esperada;
    } casos[] = {
        {Parametros("srv,1500", "a}b;c"),
         {"SQLite3", "ODBC Driver 17 for SQL Server", "FreeTDS"},
         "DRIVER={ODBC Driver 17 for SQL Server};SERVER=srv,1500;APP=AtualizaWKD;" + banco + "{a}}b;c};"},
        {Parametros(R"(srv\SQLEXPRESS)", "a}b;c"),
         {"FreeTDS"},
         R"(DRIVER=FreeTDS;SERVER=srv\SQLEXPRESS;TDS_Version=7.4;ClientCharset=UTF-8;APP=AtualizaWKD;)" + banco +
             "{a}b;c};"},
        {Parametros("srv, 1500", "x"),
         {"FreeTDS"},
         "DRIVER=FreeTDS;SERVER=srv;PORT=1500;TDS_Version=7.4;ClientCharset=UTF-8;APP=AtualizaWKD;" + banco + "x;"},
        {Parametros("srv", "x"),
         {"SQL Server", "SQLite3"},
         "DRIVER={SQL Server};SERVER=srv;APP=AtualizaWKD;" + banco + "x;"},
        {Parametros("srv", "x", "Meu Driver"), {}, "DRIVER={Meu Driver};SERVER=srv;APP=AtualizaWKD;" + banco + "x;"},
    };
    for (const auto& caso : casos) EXPECT_EQ(CadeiaDeConexao(caso.parametros, caso.instalados), caso.esperada);

    for (const std::string driver : {"ODBC Driver 18 for SQL Server", "FreeTDS"}) {
        auto parametros = Parametros("srv", "x", driver);
        EXPECT_EQ(CadeiaDeConexao(parametros, {}).find("TrustServerCertificate"), std::string::npos);
        parametros.Adiciona("Encrypt", "strict");
        parametros.Adiciona("TrustServerCertificate", "yes");
        const bool conhece = driver != "FreeTDS";
        EXPECT_EQ(
            CadeiaDeConexao(parametros, {}).find(";Encrypt=strict;TrustServerCertificate=yes;") != std::string::npos,
            conhece)
            << driver;
    }

    TParametrosConexao conta;
    conta.Adiciona("Server", "srv");
    conta.Adiciona("Trusted_Connection", "yes");
    EXPECT_EQ(CadeiaDeConexao(conta, {"SQL Server"}),
              "DRIVER={SQL Server};SERVER=srv;Trusted_Connection=yes;APP=AtualizaWKD;");

    TParametrosConexao fonte;
    fonte.Adiciona("DataSource", "Matriz");
    fonte.Adiciona("User_Name", "sa");
    EXPECT_EQ(CadeiaDeConexao(fonte, {}), "DSN=Matriz;UID=sa;");
    try {
        CadeiaDeConexao(Parametros("srv", "x"), {"SQLite3"});
        FAIL() << "no driver was missed";
    } catch (const TErroConfiguracao& erro) {
        const std::string texto = erro.what();
        for (const auto* nome :
             {"ODBC Driver 18 for SQL Server", "ODBC Driver 17 for SQL Server", "FreeTDS", "Instale"})
            EXPECT_NE(texto.find(nome), std::string::npos) << texto;
    }
}

TEST(OdbcTextos, AnErrorIsALostConnectionATableInUseOrTheStatementsOwn) {
    const std::vector<TRegistroOdbc> fimDaSessao = {{"42000", "the statement has been terminated", 3621},
                                                    {"HY000", "session is in the kill state", 596}};
    const struct {
        std::vector<TRegistroOdbc> registros;
        const char* comando;
        bool morta;
        TFalha falha;
        bool perdida;
    } casos[] = {
        {fimDaSessao, "select 1", false, TFalha::Conexao, true},
        {{{"23000", "conflict", 547}, {"HY000", "shutdown is in progress", 6005}}, "x", false, TFalha::Conexao, true},
        {{{"08S01", "communication link failure", 0}}, "x", false, TFalha::Conexao, true},
        {{{"HY000", "TCP provider: closed by the remote host", 10054}}, "x", false, TFalha::Conexao, true},
        {{{"HY000", "TCP provider: timed out", 10060}}, "x", false, TFalha::Conexao, true},
        {{{"HYT01", "connection timeout expired", 0}}, "x", false, TFalha::Conexao, true},
        {{{"HY000", "Unknown error", 0}}, "x", true, TFalha::Conexao, true},
        {{}, "commit", true, TFalha::Conexao, true},
        {{{"HY000", "Unknown error", 0}}, "x", false, TFalha::Outra, false},
        {{{"HYT00", "login timeout expired", 0}}, "", false, TFalha::Conexao, false},
        {{{"28000", "login failed", 18456}}, "", false, TFalha::Autenticacao, false},
        {{{"08S01", "unavailable", 20009}, {"01000", "unknown host", 20013}},
         "",
         false,
         TFalha::ServidorDesconhecido,
         false},
        {{{"01000", "changed context", 5701}, {"42000", "cannot open", 4060}},
         "",
         false,
         TFalha::BancoInexistente,
         false},
        {{{"42000", "being restored", 927}}, "", false, TFalha::BancoFechado, false},
        {{{"42000", "not able to access", 916}}, "", false, TFalha::BancoNegado, false},
        {{{"42000", "only one user", 924}}, "", false, TFalha::EmUso, false},
        {{{"IM002", "no such source", 0}}, "", false, TFalha::SemDriver, false},
        {{{"01000", "can't open lib", 0}}, "", false, TFalha::SemDriver, false},
        {{{"HYT00", "query timeout expired", 0}}, "x", false, TFalha::EmUso, false},
        {{{"42000", "lock request time out period exceeded", 1222}}, "x", false, TFalha::EmUso, false},
        {{{"HYT00", "lock request time out period exceeded", 1222}}, "x", false, TFalha::EmUso, false},
        {{{"40001", "deadlock victim", 1205}}, "x", false, TFalha::EmUso, false},
        {{{"42000", "CREATE TABLE permission denied", 262}}, "x", false, TFalha::SemPermissao, false},
        {{{"42S02", "referenced by a FOREIGN KEY", 3726}}, "x", false, TFalha::Dependencia, false},
        {{{"42000", "depends on column", 5074}, {"42000", "failed", 4922}}, "x", false, TFalha::Dependencia, false},
        {{{"42000", "transaction log is full", 9002}}, "x", false, TFalha::DiscoCheio, false},
        {{{"42000", "Cannot open backup device 'D:\\no permission.bak'. Operating system error 3", 3201},
          {"42000", "BACKUP DATABASE is terminating abnormally.", 3013}},
         "x",
         false,
         TFalha::LugarSemAcesso,
         false},
        {{{"42000", "BACKUP DATABASE permission denied in database 'is in use'", 262}, {"42000", "abnormally", 3013}},
         "x",
         false,
         TFalha::SemPermissao,
         false},
        {{{"42000", "not a valid Microsoft Tape Format backup set", 3242}}, "x", false, TFalha::NaoEBackup, false},
        {{{"42000", "damage to the backup set was detected", 3189}}, "x", false, TFalha::BackupCortado, false},
        {{{"42000", "Database 'not supported' already exists", 1801}}, "x", false, TFalha::BancoExistente, false},
    };
    for (const auto& caso : casos) {
        const auto erro = ErroDosRegistros(caso.registros, caso.comando, caso.morta);
        EXPECT_EQ(erro.Falha(), caso.falha) << erro.what();
        EXPECT_EQ(erro.ConexaoPerdida(), caso.perdida) << erro.what();
    }
}

TEST(OdbcTextos, AConnectionThatFailsSaysWhyWithoutThePassword) {
    for (const std::string driver : {"FreeTDS", "/nao/existe-segredo99.so", "/nao/certificate.so"}) {
        try {
            CriaConexaoOdbc(Parametros("127.0.0.1,1", "segredo99", driver))->Open();
            FAIL() << driver;
        } catch (const TErroBanco& erro) {
            const std::string texto = erro.what();
            EXPECT_EQ(erro.Falha(), driver == "FreeTDS" ? TFalha::Conexao : TFalha::SemDriver)
                << erro.SqlState() << " " << texto;
            EXPECT_FALSE(erro.ConexaoPerdida());
            EXPECT_EQ((texto + erro.Comando()).find("segredo99"), std::string::npos) << texto;
            EXPECT_GT(texto.size(), 10u);
            EXPECT_EQ(texto.find("TrustServerCertificate=yes") != std::string::npos,
                      texto.find("certificate") != std::string::npos);
        }
    }
}

}  // namespace
}  // namespace wkd
