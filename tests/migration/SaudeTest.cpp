// What is told of the database as a whole before anything is touched.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <map>

#include "BancoOdbc.h"
#include "BancoTemporario.h"
#include "Programa.h"
#include "ServidorFirebird.h"
#include "context/Saude.h"
#include "dialect/Dialeto.h"
#include "firebird/ClienteFirebird.h"
#include "firebird/ConexaoFirebird.h"
#include "firebird/SessaoFirebird.h"

namespace wkd {
namespace {

/// But that of a client library of 3.0 with a server of 4.0, where the tests have one.
TAvisos SemOCliente(TAvisos avisos) {
    std::erase_if(avisos, [](const auto& aviso) { return aviso.tipo == "cliente-antigo"; });
    return avisos;
}

/// Kinds of the warnings, those that a run tells with "!", those that would stop it with "!!".
std::string Tipos(const TAvisos& avisos) {
    constexpr const char* kPesos[] = {"", "!", "!!"};
    std::string tipos;
    for (const auto& aviso : avisos)
        tipos += (tipos.empty() ? "" : " ") + aviso.tipo + kPesos[static_cast<int>(aviso.peso)];
    return tipos;
}

TEST(Saude, OnlyWhatIsKnownAndOutOfBoundsIsTold) {
    const TCapacidades firebird3{.versao = 300, .versaoDoCliente = 300, .estrutura = 1200, .estruturaDoServidor = 1200};
    TCapacidades firebird5{.versao = 500, .versaoDoCliente = 300, .estrutura = 1300, .estruturaDoServidor = 1301};
    const TCapacidades sqlServer{.versao = 1300};
    const struct {
        TSaude saude;
        TCapacidades capacidades;
        const char* tipos;
    } casos[] = {
        {{}, {}, ""},
        {{}, firebird3, ""},
        {{.escritasForcadas = true}, firebird3, ""},
        {{.escritasForcadas = false}, firebird3, "escritas-nao-forcadas"},
        {{}, firebird5, "estrutura-antiga cliente-antigo"},
        {{.maisAntiga = 1, .ativaMaisAntiga = 40'001, .proxima = 40'001}, firebird3, ""},
        {{.maisAntiga = 1, .ativaMaisAntiga = 40'002, .proxima = 40'002}, firebird3, "transacoes-paradas!"},
        {{.maisAntiga = 1, .ativaMaisAntiga = 300, .proxima = 300, .intervaloDeSweep = 100},
         firebird3,
         "transacoes-paradas!"},
        {{.maisAntiga = 1, .proxima = 90'000}, firebird3, ""},
        {{.emLimbo = 0}, firebird3, ""},
        {{.emLimbo = 2}, firebird3, "transacoes-em-limbo!!"},
        {{.umSoUsuario = true}, firebird3, "um-so-usuario!!"},
        {{.umSoUsuario = true}, {.embarcado = true}, ""},
        {{.compatibilidade = 130, .recuperacao = "SIMPLE", .logUsado = 79, .instantaneo = true}, sqlServer, ""},
        {{.compatibilidade = 100,
          .recuperacao = "FULL",
          .logUsado = 80,
          .instantaneo = false,
          .semAcentos = {"TCLI.NOME"}},
         sqlServer,
         "nivel-de-compatibilidade log-cheio! recuperacao-completa sem-instantaneo chaves-sem-acentos"},
        {{.naoSabidos = {"o uso do log de transações"}}, sqlServer, "nao-sabido"},
    };
    for (const auto& caso : casos) EXPECT_EQ(Tipos(AvisosDaSaude(caso.saude, caso.capacidades)), caso.tipos);
    EXPECT_EQ(Tipos(AvisosDosFormatos({{"TCLI", 199}, {"TPED", 200}})), "versoes-perto-do-fim!");
    EXPECT_TRUE(AvisosDosFormatos({{"TCLI", 199}}).empty());
}

/// Runs a statement in a transaction of two phases and leaves it after the first one.
void DeixaEmLimbo(const TParametrosConexao& parametros, const std::string& comando) {
    void* const biblioteca = dlopen("libfbclient.so.2", RTLD_NOW);
    const auto executa =
        reinterpret_cast<decltype(&isc_dsql_execute_immediate)>(dlsym(biblioteca, "isc_dsql_execute_immediate"));
    const auto prepara =
        reinterpret_cast<decltype(&isc_prepare_transaction)>(dlsym(biblioteca, "isc_prepare_transaction"));
    const auto bloco = BlocoDeConexao(parametros, "UTF8");
    isc_db_handle banco = 0;
    isc_tr_handle transacao = 0;
    ISC_STATUS_ARRAY estado;
    ASSERT_EQ(Cliente().isc_attach_database(estado, 0, parametros.Valor("Database").c_str(), &banco,
                                            static_cast<short>(bloco.size()), bloco.data()),
              0);
    Cliente().isc_start_transaction(estado, &transacao, 1, &banco, 0, nullptr);
    ASSERT_EQ(executa(estado, &banco, &transacao, 0, comando.c_str(), 3, nullptr), 0);
    ASSERT_EQ(prepara(estado, &transacao), 0);
    ASSERT_EQ(Cliente().isc_detach_database(estado, &banco), 0);
}

TEST(Saude, TransactionsInLimboAreCountedAndWouldStopARun) {
    TBancoTemporario banco;
    banco.Conexao().ExecuteDirect("create table T (A integer)");
    EXPECT_EQ(banco.Conexao().Saude().emLimbo, 0);
    for (const char* comando : {"insert into T values (1)", "insert into T values (2)"})
        DeixaEmLimbo(banco.Parametros(), comando);
    EXPECT_EQ(banco.Conexao().Saude().emLimbo, 2);
    EXPECT_EQ(Tipos(SemOCliente(AvisosDoDriver(banco.Conexao()))), "transacoes-em-limbo!! escritas-nao-forcadas");
    EXPECT_NE(AvisosDoDriver(banco.Conexao()).at(0).texto.find("desfecho: 2"), std::string::npos);
    EXPECT_THROW(LeTudo(*banco.Conexao().Prepara("select * from T")), TErroBanco) << "what they changed";
}

/// Firebird's tool on the database, whose connection is closed meanwhile.
void Gfix(TBancoTemporario& banco, std::vector<std::string> opcoes) {
    const auto nome = banco.Parametros().Valor("Database");
    opcoes.insert(opcoes.end(), {"-user", "SYSDBA", "-password", "masterkey", nome});
    banco.Conexao().Close();
    const auto gfix = RodaPrograma("/usr/bin/gfix", opcoes, banco.Arquivo().parent_path());
    ASSERT_EQ(gfix.codigo, 0) << gfix.erros;
    banco.Conexao().Open();
}

TEST(Saude, ADatabaseOfAServerForOneConnectionHasNoPlaceForTheLock) {
    if (!TServidorFirebird::Instalado()) GTEST_SKIP() << "no Firebird server is installed";
    TBancoTemporario banco("UTF8", TServidorFirebird::DoProcesso().Endereco());
    EXPECT_EQ(Tipos(AvisosDoCatalogo(banco.Conexao())), "");
    Gfix(banco, {"-shut", "single", "-force", "0"});
    EXPECT_EQ(Tipos(AvisosDoCatalogo(banco.Conexao())), "um-so-usuario!!");
    EXPECT_THROW(banco.Outra(), TErroBanco);
    Gfix(banco, {"-online"});
    EXPECT_EQ(Tipos(AvisosDoCatalogo(banco.Conexao())), "");
}

TEST(Saude, ATransactionLeftOpenHoldsTheOthersBack) {
    TBancoTemporario banco;
    Gfix(banco, {"-housekeeping", "100"});
    banco.Conexao().ExecuteDirect("create table T (A integer)");
    const auto esquecida = banco.Outra();
    esquecida->StartTransaction();
    esquecida->Prepara("insert into T values (1)")->Executa();
    const auto enche = [&](int vezes) {
        for (int i = 0; i < vezes; ++i) banco.Conexao().ExecuteDirect("update T set A = 2 where A = 3");
    };
    enche(150);
    const auto saude = banco.Conexao().Saude();
    EXPECT_EQ(saude.intervaloDeSweep, 100);
    EXPECT_GE(saude.proxima.value() - saude.maisAntiga.value(), 150);
    EXPECT_EQ(Tipos(SemOCliente(AvisosDoDriver(banco.Conexao()))), "escritas-nao-forcadas");
    enche(100);
    const auto avisos = SemOCliente(AvisosDoDriver(banco.Conexao()));
    EXPECT_EQ(Tipos(avisos), "transacoes-paradas! escritas-nao-forcadas");
    EXPECT_NE(avisos.at(0).texto.find("aberta desde então"), std::string::npos);
    esquecida->Rollback();
}

TEST(Saude, TheDriverTellsWithoutAStatementAndTheDiskOfAServerHere) {
    TBancoTemporario banco;
    int comandos = 0;
    banco.Conexao().Observa([&](std::string_view) { ++comandos; });
    const auto saude = banco.Conexao().Saude();
    EXPECT_TRUE(banco.Conexao().EspacoLivre().has_value()) << "embedded, or a server on 127.0.0.1";
    EXPECT_EQ(comandos, 0);
    EXPECT_EQ(saude.escritasForcadas, false);
    EXPECT_TRUE(saude.livresNoArquivo.has_value());
    EXPECT_EQ(AvisosDoCatalogo(banco.Conexao()).size(), 0u);
    EXPECT_EQ(comandos, 1);
}

bool ErroAoExecutar(TConnection& conexao, const std::string& comando) try {
    conexao.ExecuteDirect(comando);
    return false;
} catch (const TErroBanco&) {
    return true;
}

/// The server itself says where its limit is.
TEST(Saude, AnIndexKeyThatPagesDoNotHoldIsKnownBefore) {
    const std::vector<std::vector<std::string>> casos = {
        {"v"}, {"v", "v"}, {"i", "v"}, {"d", "v", "f"}, {"t", "h", "v"}};
    const std::map<std::string, std::string> tipos = {
        {"i", "integer"}, {"d", "date"}, {"f", "double precision"}, {"t", "timestamp"}, {"h", "time"}};
    for (const auto& [conjunto, pagina] :
         {std::pair("UTF8", 4096), {"WIN1252", 4096}, {"WIN1252", 8192}, {"UTF8", 16384}}) {
        TPastaTemporaria pasta;
        auto parametros = ParametrosFirebird(pasta / "chaves.fdb");
        parametros.Adiciona("CharacterSet", conjunto);
        parametros.Adiciona("ForcedWrites", "False");
        CriaBancoFirebird(parametros, pagina);
        const std::shared_ptr<TConnection> conexao = CriaConexaoFirebird(parametros);
        conexao->Open();
        const TDialeto& dialeto = Dialeto(*conexao);
        const auto limite = dialeto.LimiteDaChave(dialeto.Capacidades().pagina);
        for (const auto& caso : casos) {
            const auto larguras = [&](int letras) {
                std::vector<TLargura> todas;
                for (const auto& c : caso)
                    todas.push_back(c == "v" ? TLargura{"varchar", letras, {}} : TLargura{tipos.at(c), 0, {}});
                return todas;
            };
            int cabem = 1;
            while (dialeto.BytesDaChave(*conexao, larguras(cabem + 1)) <= limite) ++cabem;
            for (const int letras : {cabem, cabem + 1}) {
                std::string colunas, nomes;
                for (std::size_t i = 0; i < caso.size(); ++i) {
                    const std::string nome = "C" + std::to_string(i);
                    nomes += (i ? "," : "") + nome;
                    colunas += (i ? "," : "") + nome + " " +
                               (caso[i] == "v" ? "varchar(" + std::to_string(letras) + ")" : tipos.at(caso[i]));
                }
                conexao->ExecuteDirect("recreate table T (" + colunas + ")");
                const bool cabe = !ErroAoExecutar(*conexao, "create index IX on T (" + nomes + ")");
                EXPECT_EQ(cabe, letras == cabem) << conjunto << " " << pagina << ": " << colunas;
            }
        }
    }
}

TEST(Saude, ASqlServerTellsWhatTheLoginMaySee) {
    if (!TBancoSqlServer::Instalado()) GTEST_SKIP() << "no SQL Server: WKD_SQLSERVER is not set";
    TBancoSqlServer banco;
    const auto saude = Dialeto(banco.Conexao()).Saude(banco.Conexao());
    EXPECT_GE(saude.compatibilidade.value_or(0), 80);
    EXPECT_NE(saude.recuperacao, "");
    EXPECT_TRUE(saude.logUsado.has_value() || !saude.naoSabidos.empty()) << "told, or said to be untold";
    EXPECT_EQ(saude.umSoUsuario, false);
}

}  // namespace
}  // namespace wkd
