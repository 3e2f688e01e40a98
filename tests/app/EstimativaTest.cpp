#include "report/Estimativa.h"

#include <gtest/gtest.h>

#include "commands/LinhaDoTerminal.h"

namespace wkd {
namespace {

using namespace std::chrono_literals;

/// Work under a clock that stands still until it is moved.
class TEstimativaTest : public ::testing::Test {
  protected:
    /// Work at an even pace, told row by row.
    void Trabalha(std::chrono::milliseconds tempo, int linhas) {
        for (int i = 0; i < linhas; ++i) {
            agora_ += tempo / linhas;
            estimativa_.Feito(++feitas_);
        }
    }

    TEstimativa::TInstante agora_{};
    std::int64_t feitas_ = 0;
    TEstimativa estimativa_{[this] { return agora_; }};
};

TEST_F(TEstimativaTest, PromisesOnlyWhatItMeasured) {
    EXPECT_EQ(estimativa_.Texto(), "");
    estimativa_.Comeca(27'000);
    EXPECT_EQ(estimativa_.Texto(), "");
    Trabalha(500ms, 500);
    EXPECT_EQ(estimativa_.Texto(), "500 de 27.000 (1%)");
    Trabalha(4500ms, 4500);
    EXPECT_EQ(estimativa_.Texto(), "5.000 de 27.000 (18%), faltam 00:00:22, 1.000/s");
    Trabalha(22s, 22'000);
    EXPECT_EQ(estimativa_.Texto(), "27.000 de 27.000 (100%), 1.000/s");
}

TEST_F(TEstimativaTest, FollowsThePaceOfTheLastSeconds) {
    estimativa_.Comeca(1'000'000);
    Trabalha(60s, 60'000);
    Trabalha(11s, 1'100);
    EXPECT_NEAR(estimativa_.PorSegundo().value(), 100, 60);
    EXPECT_NEAR(static_cast<double>(estimativa_.Falta()->count()), 938'900 / 100, 938'900 / 100 * 0.4);
}

TEST_F(TEstimativaTest, ALongStopLengthensWhatIsLeft) {
    estimativa_.Comeca(2'000);
    Trabalha(10s, 1'000);
    const auto antes = *estimativa_.Falta();
    agora_ += 10s;
    EXPECT_GE(*estimativa_.Falta(), antes * 19 / 10);
}

TEST_F(TEstimativaTest, BeginsAnewWithOtherWork) {
    estimativa_.Comeca(100);
    Trabalha(100s, 100);
    estimativa_.Feito(0);
    EXPECT_EQ(estimativa_.Texto(), "");
    estimativa_.Comeca(0);
    feitas_ = 0;
    Trabalha(2s, 2'000);
    EXPECT_EQ(estimativa_.Texto(), "2.000, 1.000/s");
    EXPECT_FALSE(estimativa_.Falta());
}

TEST(Andamento, TellsTableDoneAndLeftInThisOrder) {
    EXPECT_EQ(LinhaDeAndamento(
                  {2, 12, "Analisando Tabela: TCLI_CON", "Restaurando backup da tabela: TCLI_CON", "5 de 10 (50%)"}),
              "Tabela 3 de 12 | 5 de 10 (50%) | Restaurando backup da tabela: TCLI_CON");
    EXPECT_EQ(LinhaDeAndamento({2, 12, "Analisando Tabela: TCLI_CON", "Parado.", ""}),
              "Tabela 3 de 12 | Analisando Tabela: TCLI_CON");
    EXPECT_EQ(LinhaDeAndamento({0, 12, "Parado.", "Parado.", ""}), "");
    EXPECT_EQ(
        LinhaDeAndamento({2, 12, "Analisando Tabela: TCLI_CON", "Parado.", "", "sem resposta do servidor há 31 s"}),
        "sem resposta do servidor há 31 s | Tabela 3 de 12 | Analisando Tabela: TCLI_CON");
}

TEST(Andamento, TheLineFitsTheTerminal) {
    EXPECT_EQ(Corta("ação", 4), "ação");
    EXPECT_EQ(Corta("ação longa", 5), "ação…");
    EXPECT_EQ(Corta("", 5), "");
}

}  // namespace
}  // namespace wkd
