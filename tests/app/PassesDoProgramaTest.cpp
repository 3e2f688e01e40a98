// The passes of whole runs of the program: settled data stays as it is, missing tables are told once a pass.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "Arquivos.h"
#include "Linhas.h"
#include "ProgramaApoio.h"
#include "Retrato.h"
#include "values/Texto.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;

class PassesDoProgramaTest : public ::testing::Test {
  protected:
    PassesDoProgramaTest() {
        fs::create_directory(loja_ / "rel");
        loja_.Escreve("WKD.ini", loja_.Arquivo("WKD.ini") + "RELATORIO=" + (loja_ / "rel").string() + "\n");
    }
    void Executa(const std::vector<std::string>& comandos) {
        const auto banco = loja_.Banco();
        for (const std::string& comando : comandos) banco->ExecuteDirect(comando);
    }
    std::map<std::string, std::string> Relatorios() const {
        std::map<std::string, std::string> arquivos;
        for (const auto& item : fs::directory_iterator(loja_ / "rel"))
            arquivos[item.path().filename().string()] = LeArquivo(item.path());
        return arquivos;
    }

    TProgramaInstalado loja_;
};

TEST_F(PassesDoProgramaTest, TheThirdRunOfAPackageMovesNothing) {
    Executa({"update SATRIB set VALOR_PADRAO = '1,5' where ARQUIVO = 'TCLI_CON' and NOME = 'LIMITE_CREDITO'",
             "update TCLI_CON set LIMITE_CREDITO = null where LIMITE_CREDITO = 0"});
    ASSERT_EQ(loja_.Atualiza().codigo, 0);
    Executa(
        {"insert into SATRIB_USER (ARQUIVO, SEQUENCIA, NOME, TIPO, TAMANHO, CHAVE_DE_PESQUISA, COD_PLUGIN) values "
         "('TCLI_CON', 90, 'U_RAMAL', 'ftString', 10, 0, 'P1')",
         "insert into SATRIB_USER (ARQUIVO, SEQUENCIA, NOME, TIPO, TAMANHO, CHAVE_DE_PESQUISA, COD_PLUGIN) values "
         "('U_VISITAS', 1, 'U_CODIGO', 'ftInteger', 0, 1, 'P1')",
         "insert into SLOOKUP_USER (ARQUIVO, CAMPO, COD_PLUGIN) values ('TCLI_CON', 'U_RAMAL', 'P1')",
         "insert into SPESQ_USER (ARQUIVO, NOMEPESQUISA, COD_PLUGIN) values ('TCLI_CON', 'TCLI_CON_P_U_R', 'P1')",
         "insert into SATRIB (ARQUIVO, NOME, TIPO) values ('TSEM_ARQUIVO', 'A', 'ftString')",
         "insert into SLOOKUP (ARQUIVO, CAMPO) values ('TSEM_ARQUIVO', 'A')",
         "insert into SARQUIVO (COD_MODULO, NOME_ARQUIVO) values ('999', 'TFORA_DO_PACOTE')"});

    const auto segunda = loja_.Atualiza();
    EXPECT_EQ(segunda.codigo, 0) << segunda.erros;
    const std::string depois = loja_.Retrato();
    const auto relatorios = Relatorios();
    EXPECT_NE(depois.find("TCLI_CON.U_RAMAL"), std::string::npos);
    EXPECT_NE(depois.find("U_VISITAS chave U_CODIGO"), std::string::npos);
    EXPECT_EQ(depois.find("TSEM_ARQUIVO"), std::string::npos);
    EXPECT_EQ(depois.find("TFORA_DO_PACOTE"), std::string::npos);
    EXPECT_EQ(relatorios.size(), 3u);

    const auto terceira = loja_.Atualiza();
    EXPECT_EQ(terceira.codigo, 0) << terceira.erros;
    EXPECT_EQ(Diferencas(depois, loja_.Retrato()), "");
    EXPECT_EQ(Relatorios(), relatorios);
}

TEST_F(PassesDoProgramaTest, AMissingTableIsToldOnceByEveryPassThatNeedsIt) {
    ASSERT_EQ(loja_.Atualiza().codigo, 0);
    const struct {
        std::string tabela;
        std::vector<std::string> passes;  // whose line of the error list names the table
        std::string acao;                 // of the run log, where the pass tells it there alone
    } casos[] = {
        {"TRBFIELD", {}, "Inserindo dicionário de dados"},
        {"TRBTABLE", {}, "Inserindo dicionário de dados"},
        {"TINI", {"QuerysAnteriores: ", "QuerysPosteriores: ", "AtualizaLookupFisico: "}, ""},
        {"TARQ_VER", {"AtualizaArquivosSistema: "}, ""},
    };
    for (const auto& [tabela, passes, acao] : casos) {
        Executa({"drop table " + tabela});
        loja_.Escreve("AtualizaWKD.log", "");
        const auto saida = loja_.Atualiza();
        EXPECT_EQ(saida.codigo, 1) << tabela;
        EXPECT_TRUE(saida.Diz("Tempo de Atualização")) << tabela << ": the run came to its end";
        for (const std::string& passe : passes)
            EXPECT_EQ(std::ranges::count_if(Divide(saida.erros, '\n'),
                                            [&](const std::string& linha) {
                                                return linha.starts_with(passe) ||
                                                       linha.find(" " + passe) != std::string::npos;
                                            }),
                      1)
                << tabela << " " << passe << saida.erros;
        const std::string log = loja_.Arquivo("AtualizaWKD.log");
        EXPECT_NE(log.find(tabela), std::string::npos) << log;
        EXPECT_NE(log.find("Ação: " + acao), std::string::npos) << log;
    }
}

TEST_F(PassesDoProgramaTest, APackageWithoutSystemFilesAndAMissingFolderDoNotStopTheNextPasses) {
    fs::remove(loja_.PastaDoPacote() / "ARQUIVOS");
    loja_.Empacota();
    fs::remove(loja_ / "rel");
    const auto saida = loja_.Atualiza();
    EXPECT_EQ(saida.codigo, 1);
    EXPECT_TRUE(saida.Diz("AtualizaRelatorio: Não foi possível copiar o relatório para '")) << saida.erros;
    EXPECT_TRUE(saida.Diz("AtualizaArquivosSistema: O pacote não contém o arquivo ARQUIVOS")) << saida.erros;
    EXPECT_TRUE(saida.Diz("Querys : Dicionario de Tabelas"));
    const auto banco = loja_.Banco();
    EXPECT_NE(Linhas(*banco, "select count(*) from TRBFIELD"), "0");
}

}  // namespace
}  // namespace wkd
