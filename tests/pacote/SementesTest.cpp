// What the fuzzers start from, and every file they ever found fault with, through the same exercises.
#include <gtest/gtest.h>

#include "Exercicios.h"
#include "PastaTemporaria.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;

struct TAlvo {
    const char* pasta;
    void (*exercita)(const fs::path&);
};

void PrintTo(const TAlvo& alvo, std::ostream* saida) { *saida << alvo.pasta; }

class Sementes : public testing::TestWithParam<TAlvo> {};

TEST_P(Sementes, NoneCrashesHangsOrLoses) {
    int quantas = 0;
    for (const auto& semente : fs::directory_iterator(fs::path(WKD_SEMENTES) / GetParam().pasta)) {
        SCOPED_TRACE(semente.path().filename().string());
        const TPastaTemporaria pasta;
        fs::copy_file(semente, pasta / "entrada");
        EXPECT_NO_THROW(GetParam().exercita(pasta / "entrada"));
        ++quantas;
    }
    EXPECT_GE(quantas, 5);
}

INSTANTIATE_TEST_SUITE_P(DeCadaLeitor, Sementes,
                         testing::Values(TAlvo{"xml", ExercitaPacote}, TAlvo{"binario", ExercitaPacote},
                                         TAlvo{"json", ExercitaJson}, TAlvo{"zip", ExercitaZip},
                                         TAlvo{"ini", ExercitaIni}),
                         [](const auto& caso) { return std::string(caso.param.pasta); });

}  // namespace
}  // namespace wkd
