// SIGINT and SIGTERM at many moments of an update, on the embedded engine and on a server.
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <thread>

#include "ProgramaApoio.h"
#include "Retrato.h"
#include "ServidorFirebird.h"
#include "aliases/Aliases.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using TRelogio = std::chrono::steady_clock;

/// Ends the alias's Hostname: empty for the embedded engine.
class TLojaSobSinais {
  public:
    explicit TLojaSobSinais(const std::string& servidor) {
        TAlias alias;
        alias.nome = "LOJA";
        alias.tipoBanco = "tbInterbase";
        alias.hostname = servidor;
        alias.usuario = "SYSDBA";
        alias.senha = "masterkey";
        alias.path = (loja / "").string();
        alias.database = "loja.fdb";
        fs::remove(loja / "WKD.ini");
        TAliases(loja / "WKD.ini").AdicionaAlias(alias, false);
        loja.Banco()->ExecuteDirect(
            "execute block as declare i integer = 0; begin while (i < 20000) do begin insert into TCONTAS_REC "
            "(DOCUMENTO, PARCELA, VALOR) values ('N' || :i, 1, :i); i = i + 1; end end");
        fs::rename(loja / "loja.fdb", loja / "molde.fdb");
        Renova();
        const auto inicio = TRelogio::now();
        EXPECT_EQ(loja.Atualiza().codigo, 0);
        duracao = std::chrono::duration_cast<std::chrono::milliseconds>(TRelogio::now() - inicio);
        esperado = loja.Retrato();
    }

    void Renova() const {
        fs::copy_file(loja / "molde.fdb", loja / "loja.fdb", fs::copy_options::overwrite_existing);
        fs::remove(loja / "AtualizaWKD.relatorio.json");
    }

    TProgramaInstalado loja;
    std::chrono::milliseconds duracao{};
    std::string esperado;
};

void SinalizaEmMuitosMomentos(const std::string& servidor) {
    constexpr int kMomentos = 12;
    const TLojaSobSinais sob(servidor);
    std::chrono::milliseconds maior{};
    int interrompidas = 0;
    for (int i = 0; i < kMomentos; ++i) {
        const int sinal = i % 2 == 0 ? SIGTERM : SIGINT;
        SCOPED_TRACE("sinal " + std::to_string(sinal) + " no momento " + std::to_string(i));
        sob.Renova();
        TProgramaEmCurso programa = sob.loja.Comeca();
        programa.EsperaAtender();
        std::this_thread::sleep_for(sob.duracao * i / kMomentos);
        const auto quando = TRelogio::now();
        programa.Sinaliza(sinal);
        const int codigo = programa.Espera(12s);
        maior = std::max(maior, std::chrono::duration_cast<std::chrono::milliseconds>(TRelogio::now() - quando));
        if (codigo != 0) {
            ++interrompidas;
            ASSERT_EQ(codigo, 128 + sinal) << sob.loja.Arquivo("erros.txt");
        }
        if (fs::exists(sob.loja / "AtualizaWKD.relatorio.json") && codigo != 0) {
            EXPECT_NE(sob.loja.Arquivo("AtualizaWKD.relatorio.json").find("Interrompida: rode de novo"),
                      std::string::npos);
            EXPECT_NE(sob.loja.Arquivo("AtualizaWKD.log").find("Interrompida: rode de novo"), std::string::npos);
        }
        EXPECT_EQ(sob.loja.Atualiza().codigo, 0) << sob.loja.Arquivo("erros.txt");
        EXPECT_EQ(Diferencas(sob.esperado, sob.loja.Retrato()), "");
    }
    EXPECT_LT(maior, 10s);
    EXPECT_GT(interrompidas, 0);
    testing::Test::RecordProperty("interrompidas", interrompidas);
    testing::Test::RecordProperty("maior_espera_ms", static_cast<int>(maior.count()));
}

/// Exit code of a run that gets both signals after that time; half of it while the run is over before.
int CodigoComDoisSinais(const TLojaSobSinais& sob, std::chrono::milliseconds espera) {
    int codigo = 0;
    for (int vez = 0; codigo == 0 && vez < 10; ++vez, espera /= 2) {
        sob.Renova();
        TProgramaEmCurso programa = sob.loja.Comeca();
        programa.EsperaAtender();
        std::this_thread::sleep_for(espera);
        for (const int sinal : {SIGINT, SIGTERM}) {  // of two that wait, the lower number is taken first
            programa.Sinaliza(sinal);
            std::this_thread::sleep_for(10ms);
        }
        codigo = programa.Espera(12s);
    }
    return codigo;
}

TEST(Sinal, ASecondOneDoesNotWaitAndTheFirstGivesTheCode) {
    const TLojaSobSinais sob("");
    for (int i = 1; i < 4; ++i) {
        SCOPED_TRACE("momento " + std::to_string(i));
        EXPECT_EQ(CodigoComDoisSinais(sob, sob.duracao * i / 5), 128 + SIGINT) << sob.loja.Arquivo("erros.txt");
        EXPECT_NE(sob.loja.Arquivo("AtualizaWKD.log").find("Interrompida: rode de novo"), std::string::npos);
        EXPECT_EQ(sob.loja.Atualiza().codigo, 0) << sob.loja.Arquivo("erros.txt");
        EXPECT_EQ(Diferencas(sob.esperado, sob.loja.Retrato()), "");
    }
}

TEST(Sinal, BehindTheEndTheCodeIsTheRuns) {
    const TLojaSobSinais sob("");
    sob.Renova();
    TProgramaEmCurso programa = sob.loja.Comeca();
    while (!fs::exists(sob.loja / "AtualizaWKD.relatorio.json")) std::this_thread::sleep_for(1ms);
    programa.Sinaliza(SIGTERM);
    EXPECT_EQ(programa.Espera(12s), 0) << sob.loja.Arquivo("erros.txt");
    EXPECT_EQ(sob.loja.Arquivo("AtualizaWKD.relatorio.json").find("Interrompida"), std::string::npos);
}

TEST(Sinal, InterruptsAtAnyMomentAndTheNextRunFinishes) { SinalizaEmMuitosMomentos(""); }

TEST(Sinal, InterruptsAtAnyMomentWithAServerToo) {
    if (!TServidorFirebird::Instalado()) GTEST_SKIP() << "no Firebird server installed";
    SinalizaEmMuitosMomentos(TServidorFirebird::DoProcesso().Endereco());
}

}  // namespace
}  // namespace wkd
