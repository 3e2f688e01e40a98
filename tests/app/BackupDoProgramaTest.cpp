// Backup, proof, rehearsal, update with a net and way back, as commands.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <nlohmann/json.hpp>
#include <set>

#include "Arquivos.h"
#include "ProgramaApoio.h"
#include "rows/WKDQuery.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;
using TJson = nlohmann::json;

/// The program with settings of its own.
class TProgramaComBackup : public TProgramaInstalado {
  public:
    TProgramaComBackup() { setenv("XDG_CONFIG_HOME", (*this / "config").c_str(), 1); }
    ~TProgramaComBackup() { unsetenv("XDG_CONFIG_HOME"); }

    std::vector<std::string> Backups(const fs::path& pasta = "Backup") const {
        std::vector<std::string> nomes;
        if (fs::exists(*this / pasta))
            for (const auto& entrada : fs::directory_iterator(*this / pasta))
                if (entrada.path().extension() == ".fbk") nomes.push_back(entrada.path().string());
        return nomes;
    }
};

TEST(BackupDoPrograma, MakesProvesAndGoesBack) {
    const TProgramaComBackup loja;
    const std::string antes = loja.Retrato();
    auto saida = loja.Roda({"--backup", "LOJA"});
    ASSERT_EQ(saida.codigo, 0) << saida.erros;
    ASSERT_EQ(loja.Backups().size(), 1u);
    const std::string arquivo = loja.Backups().front();
    saida = loja.Roda({"--prova-backup", arquivo});
    EXPECT_EQ(saida.codigo, 0) << saida.erros;
    EXPECT_TRUE(saida.Diz("O backup é bom")) << saida.saida;

    loja.Banco()->ExecuteDirect("delete from TVENDA_ITENS");
    const std::string mudado = loja.Retrato();
    saida = loja.Roda({"--restaura", "LOJA", arquivo});
    EXPECT_EQ(saida.codigo, 2);
    EXPECT_TRUE(saida.Diz("--sim")) << saida.erros;
    EXPECT_EQ(loja.Retrato(), mudado);
    saida = loja.Roda({"--restaura", "LOJA", arquivo, "--sim"});
    EXPECT_EQ(saida.codigo, 0) << saida.erros;
    EXPECT_TRUE(saida.Diz("LOJA_antes.fdb")) << saida.saida;
    EXPECT_EQ(loja.Retrato(), antes);

    fs::create_directory(loja / "outra");
    EXPECT_EQ(loja.Roda({"--backup", "LOJA", "outra"}).codigo, 0);
    EXPECT_EQ(loja.Backups("outra").size(), 1u);
    saida = loja.Roda({"--backup", "LOJA", "nenhuma"});
    EXPECT_EQ(saida.codigo, 2);
    EXPECT_TRUE(saida.Diz("não existe. Crie-a")) << saida.erros;
    fs::remove_all(loja / "outra");
    fs::create_directory(loja / "outra");
    EXPECT_EQ(loja.Roda({"--backup", "LOJA"}).codigo, 0);  // the folder is remembered
    EXPECT_EQ(loja.Backups("outra").size(), 1u);

    fs::remove(loja / "loja.fdb");  // as a swap by two renames leaves it when it is cut off
    saida = loja.Roda({"--confere", "LOJA"});
    EXPECT_EQ(saida.codigo, 3);
    EXPECT_TRUE(saida.Diz("está, inteiro, em") && saida.Diz("LOJA_antes.fdb")) << saida.erros;
}

TEST(BackupDoPrograma, TheGroupThatMayRunUpdatesSharesTheFolderOfBackups) {
    const TProgramaComBackup loja;
    ASSERT_EQ(chmod((loja / ".").c_str(), 02775), 0);
    ASSERT_EQ(loja.Roda({"--backup", "LOJA"}).codigo, 0);
    const auto modo = [](const fs::path& caminho) {
        struct stat estado {};
        EXPECT_EQ(stat(caminho.c_str(), &estado), 0) << caminho;
        return estado.st_mode & 07777;
    };
    EXPECT_EQ(modo(loja / "Backup"), 02775u);
    EXPECT_EQ(modo(loja.Backups().at(0)), 0660u);
    EXPECT_EQ(modo(loja.Backups().at(0) + ".json"), 0640u);
}

TEST(BackupDoPrograma, ReadsAManifestWithoutFormatAndRefusesALaterOne) {
    const TProgramaComBackup loja;
    ASSERT_EQ(loja.Roda({"--backup", "LOJA"}).codigo, 0);
    const std::string arquivo = loja.Backups().front();
    auto manifesto = TJson::parse(LeArquivo(arquivo + ".json"));
    manifesto.erase("formato");
    EscreveArquivo(arquivo + ".json", manifesto.dump());
    EXPECT_EQ(loja.Roda({"--prova-backup", arquivo}).codigo, 0);

    manifesto["formato"] = 2;
    EscreveArquivo(arquivo + ".json", manifesto.dump());
    const auto saida = loja.Roda({"--prova-backup", arquivo});
    EXPECT_EQ(saida.codigo, 2);
    EXPECT_TRUE(saida.Diz("versão mais nova do programa")) << saida.erros;
}

TEST(BackupDoPrograma, RehearsesWithoutTouchingTheDatabase) {
    const TProgramaComBackup loja;
    loja.Banco()->ExecuteDirect("insert into TCONTAS_REC (DOCUMENTO, PARCELA, HISTORICO) values ('X', 1, 'h')");
    const std::string antes = loja.Retrato();
    const auto saida = loja.Roda({"--ensaio", "LOJA", "pacote.zip", "--json"});
    ASSERT_TRUE(saida.codigo == 10 || saida.codigo == 11) << saida.erros;
    const auto ensaio = TJson::parse(saida.saida);
    EXPECT_TRUE(ensaio.at("pode").get<bool>()) << saida.saida;
    EXPECT_GT(ensaio.at("segundosDaAtualizacao").get<double>(), 0);
    EXPECT_EQ(ensaio.at("copias").at("registros"), 2 * (40 + 41));
    EXPECT_EQ(ensaio.at("copias").at("confirmacoes"), 2 * (1 + 4));
    EXPECT_GT(ensaio.at("copias").at("segundos").get<double>(), 0);
    EXPECT_EQ(loja.Retrato(), antes);
    EXPECT_TRUE(loja.Backups().empty());
    EXPECT_FALSE(fs::exists(loja / "AtualizaWKD.relatorio.json"));
    for (const auto& entrada : fs::directory_iterator(loja / "."))
        EXPECT_FALSE(entrada.path().string().find("_ensaio_") != std::string::npos) << entrada.path();

    const auto atualizacao = loja.Atualiza();
    ASSERT_LE(atualizacao.codigo, 1) << atualizacao.erros;
    const auto relatorio = TJson::parse(loja.Arquivo("AtualizaWKD.relatorio.json"));
    const auto acoes = [](const TJson& execucao) {
        std::string texto;
        for (const auto& tabela : execucao.at("tabelas"))
            texto += tabela.at("tabela").get<std::string>() + " " + tabela.at("acao").get<std::string>() + " " +
                     tabela.at("registrosDepois").dump() + "\n";
        return texto;
    };
    EXPECT_EQ(acoes(ensaio.at("execucao")), acoes(relatorio));
}

TEST(BackupDoPrograma, TheRehearsalShowsEachRejectedRowWithItsKey) {
    const TProgramaComBackup loja;
    std::string colunas = loja.Arquivo("fontes/SAtrib.WKD");
    const std::string de = "NOME=\"HISTORICO\" TIPO=\"ftString\" TAMANHO=\"80\"";
    const auto onde = colunas.find(de);
    ASSERT_NE(onde, std::string::npos);
    loja.Escreve("fontes/SAtrib.WKD",
                 colunas.replace(onde, de.size(), "NOME=\"HISTORICO\" TIPO=\"ftInteger\" TAMANHO=\"0\""));
    loja.Empacota();
    const std::string antes = loja.Retrato();
    const auto linhas = ContaRegistros(*loja.Banco(), "select count(*) as total from TCONTAS_REC");
    const auto saida = loja.Roda({"--ensaio", "LOJA", "pacote.zip", "--json"});
    EXPECT_EQ(saida.codigo, 11) << saida.erros;
    const auto ensaio = TJson::parse(saida.saida);
    EXPECT_FALSE(ensaio.at("pode").get<bool>());
    std::set<std::string> chaves;
    for (const auto& rejeitada : ensaio.at("rejeitadas"))
        if (rejeitada.at("tabela") == "TCONTAS_REC") chaves.insert(rejeitada.at("chave").dump());
    EXPECT_EQ(static_cast<std::int64_t>(chaves.size()), linhas) << ensaio.at("rejeitadas").dump(1);
    EXPECT_TRUE(chaves.contains("{\"DOCUMENTO\":\"NF00001\",\"PARCELA\":1}")) << ensaio.at("rejeitadas").dump(1);
    EXPECT_EQ(loja.Retrato(), antes);
    EXPECT_FALSE(fs::exists(loja / "AtualizaWKD.rejeitados.jsonl"));
}

TEST(BackupDoPrograma, TheRehearsalKeepsTheCopyAndSaysWhyNot) {
    const TProgramaComBackup loja;
    loja.Escreve("pacote.zip", "não é um pacote");
    auto saida = loja.Roda({"--ensaio", "LOJA", "pacote.zip"});
    EXPECT_EQ(saida.codigo, 2);
    EXPECT_TRUE(saida.Diz("não pode atualizar")) << saida.saida << saida.erros;

    loja.Empacota();
    saida = loja.Roda({"--ensaio", "LOJA", "pacote.zip", "--mantem"});
    EXPECT_TRUE(saida.Diz("A cópia atualizada ficou em")) << saida.saida << saida.erros;
    saida = loja.Roda({"--backup", "LOJA"});
    EXPECT_TRUE(saida.Diz("_ensaio_")) << saida.erros;  // named by the next start
}

TEST(BackupDoPrograma, UpdatesWithABackupToGoBackTo) {
    const TProgramaComBackup loja;
    loja.Escreve("Backup", "uma pasta não é");
    const std::string antes = loja.Retrato();
    auto saida = loja.Roda({"LOJA;", "pacote.zip", "--com-backup"});
    EXPECT_EQ(saida.codigo, 2) << saida.saida;
    EXPECT_TRUE(saida.Diz("não há backup bom")) << saida.erros;
    EXPECT_EQ(loja.Retrato(), antes);

    fs::remove(loja / "Backup");
    saida = loja.Roda({"LOJA;", "pacote.zip", "--com-backup"});
    ASSERT_LE(saida.codigo, 1) << saida.erros;
    ASSERT_EQ(loja.Backups().size(), 1u);
    const auto relatorio = TJson::parse(loja.Arquivo("AtualizaWKD.relatorio.json"));
    EXPECT_EQ(relatorio.at("backup").at("arquivo"), loja.Backups().front());
    EXPECT_NE(loja.Retrato(), antes);
    EXPECT_EQ(loja.Roda({"--restaura", "LOJA", loja.Backups().front(), "--sim"}).codigo, 0);
    EXPECT_EQ(loja.Retrato(), antes);
}

TEST(BackupDoPrograma, TheCheckCountsRejectedRowsAndWhatOnlyTheBackupTableHas) {
    const TProgramaComBackup loja;
    loja.Banco()->ExecuteDirect("create table BTCIDADE (CODIGO integer, NOME varchar(50))");
    loja.Banco()->ExecuteDirect("insert into BTCIDADE values (98765, 'só aqui')");
    loja.Escreve(
        "AtualizaWKD.rejeitados.jsonl",
        "{\"alias\": \"LOJA\", \"tabela\": \"TNADA\", \"etapa\": \"e\", \"chave\": {\"A\": 1}, \"erro\": \"x\", "
        "\"valores\": {\"A\": 1}}\n");
    const auto desvios = TJson::parse(loja.Roda({"--confere", "LOJA", "--json"}).saida).at("desvios");
    std::set<std::string> rejeitadas;
    for (const auto& desvio : desvios)
        if (desvio.at("tipo") == "linhas-rejeitadas") rejeitadas.insert(desvio.at("tabela").get<std::string>());
    EXPECT_EQ(rejeitadas, (std::set<std::string>{"TCIDADE", "TNADA"}));
    const auto saida = loja.Roda({"--repoe", "LOJA"});
    EXPECT_EQ(saida.codigo, 1);
    EXPECT_TRUE(saida.Diz("a tabela não existe")) << saida.erros;
}

}  // namespace
}  // namespace wkd
