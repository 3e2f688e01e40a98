// What surrounds an unattended run: streams that nobody reads, displays that do not open, files that others laid.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "Linhas.h"
#include "ProgramaApoio.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

std::string Versoes(const TProgramaInstalado& loja) {
    return Linhas(*loja.Banco(), "select versao from sarquivo where nome_arquivo = 'TCLI_CON'");
}

/// A pipe that takes no byte until somebody reads.
struct TCanoCheio {
    int pontas[2];

    TCanoCheio() {
        EXPECT_EQ(pipe(pontas), 0);
        fcntl(pontas[1], F_SETFL, O_NONBLOCK);
        while (write(pontas[1], "x", 1) == 1) continue;
        fcntl(pontas[1], F_SETFL, 0);
    }
    ~TCanoCheio() {
        close(pontas[0]);
        close(pontas[1]);
    }
};

TEST(Saida, AReaderThatDoesNotReadStopsNoRun) {
    const TProgramaInstalado loja;
    const TCanoCheio saida, erros;
    TProgramaEmCurso programa = loja.Comeca(saida.pontas[1], erros.pontas[1]);
    EXPECT_EQ(programa.Espera(60s), 0);
    EXPECT_EQ(Versoes(loja), "4");
}

TEST(Saida, ALateReaderGetsEveryLine) {
    const TProgramaInstalado loja;
    const TCanoCheio saida;
    TProgramaEmCurso programa = loja.Comeca(saida.pontas[1]);
    while (loja.Arquivo("AtualizaWKD.relatorio.html").empty())
        ASSERT_EQ(programa.Espera(50ms), TProgramaEmCurso::kCorreAinda);
    close(saida.pontas[1]);
    std::string lido(1 << 20, '\0');
    std::size_t bytes = 0;
    for (ssize_t n; (n = read(saida.pontas[0], lido.data() + bytes, lido.size() - bytes)) > 0;)
        bytes += static_cast<std::size_t>(n);
    lido.resize(bytes);
    EXPECT_EQ(programa.Espera(20s), 0);
    EXPECT_NE(lido.find("Iniciando atualização das tabelas: "), std::string::npos);
    EXPECT_NE(lido.find("Tempo de Atualização: "), std::string::npos);
}

TEST(Saida, WithoutOpenOutputsNoLineGoesToTheDatabase) {
    const TProgramaInstalado loja;
    const std::string comando =
        "cd '" + (loja / "").string() + "' && TMPDIR=tmp ./AtualizaWKD 'LOJA;' pacote.zip <&- >&- 2>&-";
    EXPECT_EQ(WEXITSTATUS(std::system(comando.c_str())), 0);
    EXPECT_EQ(Versoes(loja), "4");
}

TEST(Saida, APlatformThatDoesNotOpenStopsOnlyTheWindow) {
    for (const auto& [plataforma, argumentos, codigo] :
         {std::tuple("nenhuma", std::vector<std::string>{"LOJA;", "pacote.zip"}, 0),
          std::tuple("xcb", std::vector<std::string>{"LOJA;", "pacote.zip", "-platform", "nenhuma"}, 0),
          std::tuple("nenhuma", std::vector<std::string>{}, 64), std::tuple("xcb", std::vector<std::string>{}, 64)}) {
        SCOPED_TRACE(plataforma);
        const TProgramaInstalado loja;
        setenv("QT_QPA_PLATFORM", plataforma, 1);
        const auto saida = loja.Roda(argumentos);
        unsetenv("QT_QPA_PLATFORM");
        EXPECT_EQ(saida.codigo, codigo) << saida.erros;
        EXPECT_EQ(saida.Diz("AtualizaWKD \"ALIAS;\" PACOTE.zip"), codigo == 64) << saida.erros;
        EXPECT_EQ(Versoes(loja), codigo == 0 ? "4" : "3");
    }
}

TEST(Saida, AnUnreadableLogStopsNothingAndStaysAsItIs) {
    const TProgramaInstalado loja;
    fs::create_directory(loja / "AtualizaWKD.log");
    const auto saida = loja.Atualiza();
    EXPECT_EQ(saida.codigo, 1) << saida.erros;
    EXPECT_NE(saida.erros.find("Não foi possível ler o log"), std::string::npos) << saida.erros;
    EXPECT_TRUE(fs::is_directory(loja / "AtualizaWKD.log"));
    EXPECT_EQ(Versoes(loja), "4");
}

/// Names that the program writes to in a folder of everybody's.
constexpr const char* kNomes[] = {"AtualizaWKD.prova",          "AtualizaWKD.log.novo", "AtualizaWKD.relatorio.json",
                                  "AtualizaWKD.relatorio.html", "erroCria.sql",         "AtualizaWKD.rejeitados.jsonl"};

TEST(Saida, LinksInTheProgramFolderAreNotFollowed) {
    const TProgramaInstalado loja;
    loja.Escreve("alheio", "intacto");
    loja.Escreve("AtualizaWKD.log", "");
    for (const char* nome : kNomes) fs::create_symlink(loja / "alheio", loja / nome);
    const auto saida = loja.Atualiza();
    EXPECT_LE(saida.codigo, 1) << saida.erros;
    EXPECT_EQ(loja.Arquivo("alheio"), "intacto");
    EXPECT_EQ(Versoes(loja), "4");
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(loja / "AtualizaWKD.relatorio.json")));
}

TEST(Saida, PipesInTheProgramFolderHoldNoRun) {
    const TProgramaInstalado loja;
    for (const char* nome : kNomes) ASSERT_EQ(mkfifo((loja / nome).c_str(), 0666), 0);
    ASSERT_EQ(mkfifo((loja / "AtualizaWKD.log").c_str(), 0666), 0);
    TProgramaEmCurso programa = loja.Comeca();
    EXPECT_EQ(programa.Espera(60s), 1) << loja.Arquivo("erros.txt");
    EXPECT_TRUE(fs::is_fifo(loja / "AtualizaWKD.log"));
    EXPECT_EQ(Versoes(loja), "4");
}

}  // namespace
}  // namespace wkd
