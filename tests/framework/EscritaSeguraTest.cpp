#include "process/EscritaSegura.h"

#include <gtest/gtest.h>

#include <system_error>
#include <thread>

#include "Arquivos.h"
#include "PastaTemporaria.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace wkd {
namespace {

namespace fs = std::filesystem;

class EscritaSeguraTest : public testing::Test {
  protected:
    EscritaSeguraTest() { EscreveArquivo(arquivo_, "antigo, e mais longo"); }

    auto Quantos() const { return std::distance(fs::directory_iterator(pasta_.Caminho()), {}); }

    TPastaTemporaria pasta_;
    const fs::path arquivo_ = pasta_ / "ação €.txt", novo_ = pasta_ / "novo";
};

TEST_F(EscritaSeguraTest, TheNewContentTakesThePlaceOfTheOldOneAndNothingIsLeftBeside) {
    SubstituiArquivo(arquivo_, "texto");
    EXPECT_EQ(LeArquivo(arquivo_), "texto");
    EscreveArquivo(novo_, "do outro");
    SubstituiPor(novo_, arquivo_);
    EXPECT_EQ(LeArquivo(arquivo_), "do outro");
    EscreveArquivo(novo_, "mais um");
    Renomeia(novo_, arquivo_);
    EXPECT_EQ(LeArquivo(arquivo_), "mais um");
    EXPECT_EQ(Quantos(), 1);
}

TEST_F(EscritaSeguraTest, OfTwoWhoMakeAFileOneGetsIt) {
    EXPECT_EQ(CriaSeNaoHa(arquivo_), nullptr);
    EXPECT_EQ(LeArquivo(arquivo_), "antigo, e mais longo");
    EXPECT_NE(CriaSeNaoHa(novo_), nullptr);
}

TEST_F(EscritaSeguraTest, WhatIsAddedStandsAtTheEnd) {
    for (const char* linha : {"um\n", "dois\n"}) EXPECT_GE(std::fputs(linha, AbreParaAcrescentar(novo_).get()), 0);
    EXPECT_EQ(LeArquivoInteiro(novo_), "um\ndois\n");
}

#ifdef _WIN32
/// As a virus scanner has it: nobody else may even look.
HANDLE Segura(const fs::path& arquivo) {
    return CreateFileW(arquivo.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
}

TEST_F(EscritaSeguraTest, WhoHoldsTheFileIsWaitedFor) {
    const HANDLE segurado = Segura(arquivo_);
    std::jthread solta([segurado] {
        Sleep(500);
        CloseHandle(segurado);
    });
    SubstituiArquivo(arquivo_, "texto");
    EXPECT_EQ(LeArquivo(arquivo_), "texto");
}

TEST_F(EscritaSeguraTest, WhoDoesNotLetGoKeepsTheOldFileWhole) {
    const HANDLE segurado = Segura(arquivo_);
    EXPECT_THROW(SubstituiArquivo(arquivo_, "texto"), std::system_error);
    CloseHandle(segurado);
    EXPECT_EQ(LeArquivo(arquivo_), "antigo, e mais longo");
    EXPECT_EQ(Quantos(), 1);
}
#endif

}  // namespace
}  // namespace wkd
