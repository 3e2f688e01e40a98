// The reports of past runs, as the program keeps and lists them.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "Arquivos.h"
#include "PastaTemporaria.h"
#include "ProgramaApoio.h"
#include "report/Historico.h"
#include "report/RelatorioDaExecucao.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;
using TJson = nlohmann::json;

std::vector<std::string> Nomes(const fs::path& pasta) {
    std::vector<std::string> nomes;
    for (const auto& entrada : fs::directory_iterator(pasta)) nomes.push_back(entrada.path().filename().string());
    std::ranges::sort(nomes);
    return nomes;
}

TEST(History, ListsEachRunNewestFirst) {
    const TProgramaInstalado loja;
    EXPECT_TRUE(loja.Roda({"--historico"}).Diz("Nenhuma atualização registrada."));
    ASSERT_EQ(loja.Atualiza().codigo, 0);
    const std::string primeiro = loja.Arquivo("AtualizaWKD.relatorio.json");
    ASSERT_EQ(loja.Atualiza("nenhum.zip").codigo, 2);

    const auto saida = loja.Roda({"--historico", "loja", "--json"});
    EXPECT_EQ(saida.codigo, 0) << saida.erros;
    const TJson execucoes = TJson::parse(saida.saida).at("execucoes");
    ASSERT_EQ(execucoes.size(), 2u) << saida.saida;
    EXPECT_EQ(execucoes[0].at("pacote"), "nenhum.zip");
    EXPECT_EQ(execucoes[0].at("veredicto").get<std::string>().substr(0, 9), "Encerrada");
    EXPECT_EQ(execucoes[1].at("alias"), "LOJA");
    EXPECT_EQ(LeArquivo(execucoes[1].at("relatorio").get<std::string>()), primeiro);
    EXPECT_EQ(Nomes(loja / "AtualizaWKD.historico").size(), 4u);
    EXPECT_EQ(LeArquivo(execucoes[0].at("relatorio").get<std::string>()), loja.Arquivo("AtualizaWKD.relatorio.json"));

    const auto texto = loja.Roda({"--historico=LOJA"});
    EXPECT_LT(texto.saida.find("nenhum.zip"), texto.saida.find("  LOJA  pacote.zip  Concluída sem erros"))
        << texto.saida;
    EXPECT_TRUE(loja.Roda({"--historico", "OUTRO"}).Diz("Nenhuma atualização registrada."));
}

TEvidencia Execucao(const std::string& alias, int segundo) {
    TEvidencia evidencia;
    evidencia.alias = alias;
    evidencia.pacote = "/pacotes/p" + std::to_string(segundo) + ".zip";
    evidencia.inicio = {{20'000}, {segundo * kTiquesPorSegundo}};
    evidencia.fim = {{20'001}, {(segundo + 5) * kTiquesPorSegundo}};
    return evidencia;
}

TEST(History, KeepsTheNewestHundredAndFindsTheLastOfAnAlias) {
    const TPastaTemporaria pasta;
    GravaRelatorio(Execucao("FILIAL", 0), pasta.Caminho());
    GravaRelatorio(Execucao("FILIAL / 2", 1), pasta.Caminho());
    for (int i = 2; i < 104; ++i) GravaRelatorio(Execucao("LOJA", i < 103 ? i : 102), pasta.Caminho());
    const auto todas = Historico(pasta.Caminho());
    ASSERT_EQ(todas.size(), kExecucoesGuardadas);
    EXPECT_EQ(todas.front().pacote, "/pacotes/p102.zip");
    EXPECT_EQ(todas.back().pacote, "/pacotes/p4.zip");
    EXPECT_EQ(todas.front().segundos, 86'405);
    EXPECT_EQ(Nomes(pasta / "AtualizaWKD.historico").size(), 2 * kExecucoesGuardadas);

    GravaRelatorio(Execucao("FILIAL / 2", 103), pasta.Caminho());
    EXPECT_EQ(UltimaExecucao(pasta.Caminho(), "filial / 2").value().pacote, "/pacotes/p103.zip");
    EXPECT_FALSE(UltimaExecucao(pasta.Caminho(), "FILIAL"));
    EXPECT_EQ(UltimaEmTexto(UltimaExecucao(pasta.Caminho(), "FILIAL")), "nenhuma registrada");
    EXPECT_EQ(UltimaEmTexto(UltimaExecucao(pasta.Caminho(), "loja")),
              "04/10/2024 00:01, p102.zip, Encerrada antes da hora");
    for (const char* deOutros : {"2999-01-01_000000_LOJA_2", "2999-01-01_000000_A_LOJA", "_LOJA", "LOJA"})
        EscreveArquivo(pasta / "AtualizaWKD.historico" / (std::string(deOutros) + ".json"), "{ pela metade");
    EXPECT_EQ(UltimaExecucao(pasta.Caminho(), "LOJA").value().pacote, "/pacotes/p102.zip");
    EscreveArquivo(pasta / "AtualizaWKD.historico/2998-12-31_235900_LOJA~2.json", "{ pela metade");
    EXPECT_EQ(UltimaEmTexto(UltimaExecucao(pasta.Caminho(), "LOJA")),
              "31/12/2998 23:59, o relatório guardado não pode ser lido");
    EXPECT_EQ(Historico(pasta.Caminho(), "LOJA").front().pacote, "/pacotes/p102.zip");
}

TEST(History, ALinkInThePlaceOfItsFolderIsNotFollowed) {
    const TPastaTemporaria pasta, alheia;
    fs::create_directory_symlink(alheia.Caminho(), pasta / "AtualizaWKD.historico");
    EXPECT_THROW(GravaRelatorio(Execucao("LOJA", 1), pasta.Caminho()), std::system_error);
    EXPECT_TRUE(fs::is_empty(alheia.Caminho()));
    EXPECT_TRUE(fs::exists(pasta / "AtualizaWKD.relatorio.html"));
}

mode_t Modo(const fs::path& caminho) {
    struct stat estado {};
    EXPECT_EQ(stat(caminho.c_str(), &estado), 0) << caminho;
    return estado.st_mode & 07777;
}

TEST(History, TheGroupThatMayRunUpdatesReadsTheReports) {
    const std::pair<mode_t, mode_t> pastas[] = {{0700, 0600}, {0755, 0600}, {0770, 0640}, {02750, 0640}, {02775, 0640}};
    for (const auto& [daPasta, doRelatorio] : pastas) {
        SCOPED_TRACE(daPasta);
        const TPastaTemporaria pasta;
        ASSERT_EQ(chmod(pasta.Caminho().c_str(), daPasta), 0);
        GravaRelatorio(Execucao("LOJA", 1), pasta.Caminho());
        EXPECT_EQ(Modo(pasta / "AtualizaWKD.historico"), daPasta);
        for (const char* nome :
             {"AtualizaWKD.relatorio.json", "AtualizaWKD.relatorio.html",
              "AtualizaWKD.historico/2024-10-04_000001_LOJA.json", "AtualizaWKD.historico/2024-10-04_000001_LOJA.html"})
            EXPECT_EQ(Modo(pasta / nome), doRelatorio) << nome;
    }
}

}  // namespace
}  // namespace wkd
