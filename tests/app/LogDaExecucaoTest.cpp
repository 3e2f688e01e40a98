#include "report/LogDaExecucao.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <iterator>

#include "PastaTemporaria.h"

namespace wkd {
namespace {

class LogDaExecucao : public testing::Test {
  protected:
    std::string Arquivo() const {
        std::ifstream f(caminho_, std::ios::binary);
        return {std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>()};
    }
    void Escreve(std::string_view bytes) const { std::ofstream(caminho_, std::ios::binary) << bytes; }

    TPastaTemporaria pasta_;
    std::filesystem::path caminho_ = pasta_.Caminho() / "AtualizaWKD.log";
    const TDataHora quando_{DataDe(2026, 3, 9), {(13 * 3600 + 5 * 60 + 7) * kTiquesPorSegundo}};
};

TEST_F(LogDaExecucao, IsBornAtTheCloseWithTheNewestOnTop) {
    TLogDaExecucao log(caminho_);
    log.Carrega();
    log.SetLog("primeira", "TCLI", "Alterar", quando_);
    EXPECT_FALSE(std::filesystem::exists(caminho_));
    log.Salva();

    TLogDaExecucao seguinte(caminho_);
    seguinte.Carrega();
    seguinte.SetLog("segunda", "", "", quando_);
    EXPECT_EQ(Arquivo(),
              "\r\nAção: \r\nTabela: \r\n[09/03/2026 13:05:07] segunda\r\n"
              "\r\nAção: Alterar\r\nTabela: TCLI\r\n[09/03/2026 13:05:07] primeira\r\n");
}

TEST_F(LogDaExecucao, KeepsTextsOfOtherEncodings) {
    const std::pair<std::string, std::string> casos[] = {
        {"Atualiza\xE7\xE3o\n", "Atualização\r\n"},
        {std::string("\xEF\xBB\xBF") + "Ação\r\nsem fim",
         "\xEF\xBB\xBF"
         "Ação\r\nsem fim\r\n"},
        {std::string("\xFF\xFE"
                     "A\0\xE7\0\x3D\xD8\x00\xDE",
                     10),
         std::string("\xFF\xFE"
                     "A\0\xE7\0\x3D\xD8\x00\xDE\r\0\n\0",
                     14)},
        {"", ""},
    };
    for (const auto& [antes, depois] : casos) {
        Escreve(antes);
        TLogDaExecucao log(caminho_);
        log.Carrega();
        log.Salva();
        EXPECT_EQ(Arquivo(), depois);
    }
}

TEST_F(LogDaExecucao, ManyEntriesStayInOrder) {
    Escreve("");
    TLogDaExecucao log(caminho_);
    log.Carrega();
    for (int i = 0; i < 500; ++i) log.SetLog(std::to_string(i), "T", "a", quando_);
    const std::string texto = Arquivo();
    EXPECT_EQ(texto, log.Texto());
    std::size_t posicao = 0;
    for (int i = 499; i >= 0; --i) {
        posicao = texto.find("] " + std::to_string(i) + "\r\n", posicao);
        ASSERT_NE(posicao, std::string::npos) << i;
    }
}

TEST_F(LogDaExecucao, WhatGrowsTooMuchIsPutAside) {
    constexpr std::size_t kLimite = 1000;
    Escreve("velho\r\n" + std::string(kLimite, 'x'));
    TLogDaExecucao log(caminho_, kLimite);
    log.Carrega();
    EXPECT_EQ(log.Texto(), "");
    const auto antigo = [&](int n) { return caminho_.string() + "." + std::to_string(n); };
    EXPECT_EQ(std::filesystem::file_size(antigo(1)), kLimite + 7);
    for (int i = 0; i < 100; ++i) log.SetLog(std::to_string(i), "T", "a", quando_);
    std::string todos = Arquivo();
    for (int n = 1; std::filesystem::exists(antigo(n)); ++n) {
        EXPECT_LT(std::filesystem::file_size(antigo(n)), kLimite + 100);
        std::ifstream f(antigo(n), std::ios::binary);
        todos.append(std::istreambuf_iterator<char>(f), {});
        EXPECT_LE(n, TLogDaExecucao::kAntigos);
    }
    std::size_t posicao = 0;
    for (int i = 99; i >= 0; --i) {
        posicao = todos.find("] " + std::to_string(i) + "\r\n", posicao);
        ASSERT_NE(posicao, std::string::npos) << i;
    }
}

TEST_F(LogDaExecucao, ALinkOfItsNameIsNeitherReadNorWritten) {
    const auto alheio = pasta_ / "alheio";
    std::ofstream(alheio) << "intacto";
    std::filesystem::create_symlink(alheio, caminho_);
    TLogDaExecucao log(caminho_);
    EXPECT_THROW(log.Carrega(), std::system_error);
    EXPECT_THROW(log.SetLog("m", "t", "a", quando_), std::system_error);
    std::ifstream f(alheio);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(f), {}), "intacto");
}

TEST_F(LogDaExecucao, AFailedWriteLeavesTheFileAsItWas) {
    Escreve("velho\r\n");
    std::filesystem::create_directory(caminho_.string() + ".novo");  // nothing can be written in its place
    TLogDaExecucao log(caminho_);
    log.Carrega();
    EXPECT_THROW(log.SetLog("m", "t", "a", quando_), std::system_error);
    EXPECT_EQ(Arquivo(), "velho\r\n");
}

TEST_F(LogDaExecucao, WhatCannotBeReadIsNotReplaced) {
    std::filesystem::create_directory(caminho_);  // even root cannot read it
    TLogDaExecucao log(caminho_);
    EXPECT_THROW(log.Carrega(), std::system_error);
    EXPECT_THROW(log.Salva(), std::system_error);
    EXPECT_TRUE(std::filesystem::is_directory(caminho_));
}

}  // namespace
}  // namespace wkd
