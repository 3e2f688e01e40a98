// A whole update gets SIGTERM at its statements, on copies of one database, and is run again.
#include <gtest/gtest.h>

#include "QuedaApoio.h"

namespace wkd {
namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr int kPasso = 29;
#else
constexpr int kPasso = 5;
#endif

TEST(SinalQuedaTest, ARunThatASignalInterruptsIsFinishedByTheNext) {
    const TMolde molde;
    const TPastaTemporaria raiz;
    const auto inteira = raiz / "inteira", cortada = raiz / "cortada";
    molde.CopiaPara(inteira);
    ASSERT_EQ(Corre(inteira, 0), 0) << LeArquivo(inteira / "erros.txt");
    const int total = std::stoi(LeArquivo(inteira / "saida.txt"));
    ASSERT_EQ(Corre(inteira, 0), 0) << LeArquivo(inteira / "erros.txt");
    const std::string esperado = RetratoDe(inteira);
    constexpr int kFim = 10;  // a run that has this few statements left may end first
    for (int n = 1; n < total - kFim; n += kPasso) {
        SCOPED_TRACE("comando " + std::to_string(n) + " de " + std::to_string(total));
        molde.CopiaPara(cortada);
        EXPECT_EQ(Corre(cortada, n, "sinal"), 128 + SIGTERM);
        EXPECT_EQ(LeArquivo(cortada / "erros.txt"), "Interrompida: rode de novo\n");
        EXPECT_EQ(Corre(cortada, 0), 0) << LeArquivo(cortada / "erros.txt");
        ASSERT_EQ(Diferencas(esperado, RetratoDe(cortada)), "");
    }
}

}  // namespace
}  // namespace wkd
