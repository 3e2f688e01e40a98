#include "aliases/ArquivoIni.h"

#include <gtest/gtest.h>
#ifndef _WIN32
#include <sys/stat.h>
#endif

#include <chrono>
#include <functional>

#include "Arquivos.h"
#include "PastaTemporaria.h"

namespace wkd {
namespace {

class ArquivoIniTest : public ::testing::Test {
  protected:
    std::string Depois(std::string_view antes, const std::function<void(TArquivoIni&)>& muda) {
        EscreveArquivo(pasta_ / "WKD.ini", antes);
        TArquivoIni ini(caminho_);
        muda(ini);
        ini.Salva();
        return LeArquivo(pasta_ / "WKD.ini");
    }

    TPastaTemporaria pasta_;
    std::filesystem::path caminho_ = pasta_ / "WKD.ini";
};

TEST_F(ArquivoIniTest, WritingAKeyLeavesEverythingElseAsItWas) {
    const struct {
        std::string_view antes, secao, chave, depois;
    } casos[] = {
        {"; topo\r\n[A]\r\n  Path = velho\r\n;fim\r\n\r\n[B]\r\nx=1", "a", "PATH",
         "; topo\r\n[A]\r\n  Path = novo\r\n;fim\r\n\r\n[B]\r\nx=1"},
        {"[A]\nx=1\n;fim\n\n[B]\nx=2\n", "A", "y", "[A]\nx=1\ny=novo\n;fim\n\n[B]\nx=2\n"},
        {"[A]\r\nx=1", "B", "y", "[A]\r\nx=1\r\n\r\n[B]\r\ny=novo\r\n"},
        {"\xEF\xBB\xBF[A]\nx=\n", "A", "x", "\xEF\xBB\xBF[A]\nx=novo\n"},
        {"[Matriz S\xE3o Paulo]\nx=\xE7\ny=1\n", "Matriz São Paulo", "y", "[Matriz S\xE3o Paulo]\nx=\xE7\ny=novo\n"},
        {"[A]\nx=1\nx=2\n[A]\nx=3\n", "A", "x", "[A]\nx=novo\nx=2\n[A]\nx=3\n"},
        {"", "A", "x", "[A]\nx=novo\n"},
    };
    for (const auto& caso : casos)
        EXPECT_EQ(Depois(caso.antes, [&](TArquivoIni& ini) { ini.Grava(caso.secao, caso.chave, "novo"); }),
                  caso.depois);
}

TEST_F(ArquivoIniTest, AnyValueWithoutLineBreakReadsBackEqual) {
    for (const std::string_view valor :
         {"a;b", "a=b", "C:\\dados\\", "#x", "\"entre aspas\"", "'", "\"", " brancos ", "\tx", "", "[x]", "ação €"}) {
        TArquivoIni ini(caminho_);
        ini.Grava("A", "x", valor);
        ini.Grava("A", "y", "depois");
        ini.Salva();
        EXPECT_EQ(TArquivoIni(caminho_).Le("A", "x"), valor);
        EXPECT_EQ(TArquivoIni(caminho_).Le("A", "y"), "depois");
    }
}

TEST_F(ArquivoIniTest, TextsThatWouldBreakTheFileAreRefused) {
    const struct {
        std::string_view secao, chave, valor;
    } casos[] = {{"A", "x", "1\n[B]"}, {"A\n", "x", "1"}, {"A]", "x", "1"}, {" ", "x", "1"}, {"A", "x\r", "1"},
                 {"A", "x=y", "1"},    {"A", ";x", "1"},  {"A", "[x", "1"}, {"A", "", "1"}};
    for (const auto& caso : casos) {
        TArquivoIni ini(caminho_);
        EXPECT_THROW(ini.Grava(caso.secao, caso.chave, caso.valor), TErroConfiguracao) << caso.chave << caso.valor;
        EXPECT_TRUE(ini.Secoes().empty());
    }
}

TEST_F(ArquivoIniTest, RemovingASectionKeepsTheCommentOfTheNext) {
    EXPECT_EQ(Depois("[A]\nx=1\n[B]\ny=2\n\n; filial\n[C]\nz=3\n", [](TArquivoIni& ini) { ini.ApagaSecao("b"); }),
              "[A]\nx=1\n; filial\n[C]\nz=3\n");
    EXPECT_FALSE(TArquivoIni(caminho_).ApagaSecao("B"));
}

#ifndef _WIN32
unsigned Modo(const std::filesystem::path& arquivo) {
    struct stat estado {};
    stat(arquivo.c_str(), &estado);
    return estado.st_mode & 07777;
}

TEST_F(ArquivoIniTest, InAFolderThatHandsItsGroupOnTheGroupReadsANewFile) {
    const std::pair<mode_t, unsigned> pastas[] = {
        {0700, 0600}, {0770, 0600}, {0775, 0600}, {02770, 0640}, {02775, 0640}};
    for (const auto& [daPasta, doArquivo] : pastas) {
        SCOPED_TRACE(daPasta);
        const TPastaTemporaria pasta;
        ASSERT_EQ(chmod(pasta.Caminho().c_str(), daPasta), 0);
        TArquivoIni ini(pasta / "WKD.ini");
        for (const unsigned modo : {doArquivo, 0600u}) {  // then one that somebody closed
            ini.Grava("A", "x", "1");
            ini.Salva();
            EXPECT_EQ(Modo(pasta / "WKD.ini"), modo);
            chmod((pasta / "WKD.ini").c_str(), 0600);
        }
    }
}

TEST_F(ArquivoIniTest, ANewFileIsPrivateAndAnOldOneKeepsItsModeAndItsLink) {
    TArquivoIni novo(caminho_);
    novo.Grava("A", "x", "1");
    novo.Salva();
    EXPECT_EQ(Modo(caminho_), 0600u);

    chmod(caminho_.c_str(), 0664);
    const auto atalho = pasta_ / "atalho.ini";
    std::filesystem::create_symlink(caminho_, atalho);
    TArquivoIni ini(atalho);
    ini.Grava("A", "x", "2");
    ini.Salva();
    EXPECT_EQ(Modo(caminho_), 0664u);
    EXPECT_TRUE(std::filesystem::is_symlink(atalho));
    EXPECT_EQ(TArquivoIni(caminho_).Le("A", "x"), "2");
}
#endif

TEST_F(ArquivoIniTest, AFileThatCannotBeWrittenStaysAndLeavesNoOtherBehind) {
    EscreveArquivo(pasta_ / "WKD.ini", "[A]\nx=\xE7\n");
    TArquivoIni ini(caminho_);
    ini.Grava("A", "x", "日本");  // has no place in Windows-1252
    EXPECT_THROW(ini.Salva(), TErroConfiguracao);
    EXPECT_EQ(LeArquivo(pasta_ / "WKD.ini"), "[A]\nx=\xE7\n");

    std::filesystem::create_directories(pasta_ / "pasta" / "ocupada");
    EXPECT_THROW(TArquivoIni(pasta_ / "pasta"), TErroConfiguracao);
    EscreveArquivo(pasta_ / "utf16.ini", std::string_view("\xFF\xFE[\0A\0]\0", 8));
    EXPECT_THROW(TArquivoIni(pasta_ / "utf16.ini"), TErroConfiguracao);
    for (const auto& entrada : std::filesystem::directory_iterator(pasta_.Caminho()))
        EXPECT_TRUE(entrada.path().filename() == "WKD.ini" || entrada.path().filename() == "pasta" ||
                    entrada.path().filename() == "utf16.ini")
            << entrada.path();
}

TEST_F(ArquivoIniTest, ManySectionsDoNotHoldTheReaderUp) {
    std::string texto;
    for (int i = 0; i < 200'000; ++i) texto += "[s" + std::to_string(i) + "]\n";
    EscreveArquivo(caminho_, texto);
    const auto inicio = std::chrono::steady_clock::now();
    EXPECT_EQ(TArquivoIni(caminho_).Secoes().size(), 200'000u);
    EXPECT_LT(std::chrono::steady_clock::now() - inicio, std::chrono::seconds(20));
}

}  // namespace
}  // namespace wkd
