// The comparison of a database with its stored dictionary, from outside.
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "ProgramaApoio.h"

namespace wkd {
namespace {

using TJson = nlohmann::json;

/// "kind table.object" of every difference, sorted.
std::vector<std::string> Desvios(const TProgramaInstalado& loja, int codigo) {
    const auto saida = loja.Roda({"--confere", "LOJA", "--json"});
    EXPECT_EQ(saida.codigo, codigo) << saida.saida << saida.erros;
    std::vector<std::string> desvios;
    const TJson documento = TJson::parse(saida.saida);
    for (const auto& desvio : documento.at("desvios"))
        desvios.push_back(desvio.at("tipo").get<std::string>() + " " + desvio.at("tabela").get<std::string>() + "." +
                          desvio.at("objeto").get<std::string>());
    std::ranges::sort(desvios);
    return desvios;
}

/// The package names an index for a table whose version it leaves as it is: no run makes it.
TEST(Confere, AnUpdatedDatabaseHasNothingToSpareButBackupTables) {
    const TProgramaInstalado loja;
    ASSERT_EQ(loja.Atualiza().codigo, 0);
    EXPECT_EQ(Desvios(loja, 11), (std::vector<std::string>{"backup-sobra BTCONTAS_REC.", "backup-sobra BTVENDA.",
                                                           "indice-falta TFORNECE.TFORNECE_CNPJ"}));
    for (const char* comando :
         {"drop table BTVENDA", "drop table BTCONTAS_REC", "create unique index TFORNECE_CNPJ on TFORNECE (CNPJ)"})
        loja.Banco()->ExecuteDirect(comando);
    EXPECT_EQ(Desvios(loja, 0), std::vector<std::string>());
    EXPECT_TRUE(loja.Roda({"--confere", "LOJA;"}).Diz("é o que o dicionário diz"));
}

TEST(Confere, NamesEachDifference) {
    const TProgramaInstalado loja;
    ASSERT_EQ(loja.Atualiza().codigo, 0);
    {
        const auto banco = loja.Banco();
        for (const char* comando :
             {"drop table BTVENDA", "drop table TFORMA_PG", "create table TEXTRA (A integer)",
              "alter table TCLI_CON drop FANTASIA", "alter table TCLI_CON add SOBRA integer",
              "alter table TCLI_CON alter NOME type varchar(90)", "alter table TCLI_CON drop LIMITE_CREDITO",
              "alter table TCLI_CON add LIMITE_CREDITO date", "alter table TESTADO drop constraint PK_TESTADO",
              "drop index TVENDA_CLIENTE", "create index A_MAIS on TVENDA (TOTAL)", "drop index TPRODUTO_DESCRICAO",
              "create unique index TPRODUTO_DESCRICAO on TPRODUTO (CODIGO)",
              "update SARQUIVO set VERSAO = -1 where NOME_ARQUIVO in ('TCONTAS_REC', 'TCIDADE')",
              "insert into TINI values ('AtualizaTabela', 'TVENDEDOR', 'SIM')"})
            banco->ExecuteDirect(comando);
    }
    EXPECT_EQ(Desvios(loja, 11), (std::vector<std::string>{
                                     "analise-pendente TVENDEDOR.", "chave TESTADO.", "coluna-falta TCLI_CON.FANTASIA",
                                     "coluna-sobra TCLI_CON.SOBRA", "indice-difere TPRODUTO.TPRODUTO_DESCRICAO",
                                     "indice-falta TFORNECE.TFORNECE_CNPJ", "indice-falta TVENDA.TVENDA_CLIENTE",
                                     "indice-sobra TVENDA.A_MAIS", "reconstrucao-pendente TCIDADE.",
                                     "reconstrucao-pendente TCONTAS_REC.", "tabela-falta TFORMA_PG.",
                                     "tabela-sobra TEXTRA.", "tamanho TCLI_CON.NOME", "tipo TCLI_CON.LIMITE_CREDITO"}));
}

TEST(Confere, EndsWithTheCodeOfWhatIsMissing) {
    const TProgramaInstalado loja;
    EXPECT_EQ(loja.Roda({"--confere"}).codigo, 64);
    EXPECT_EQ(loja.Roda({"--confere", "NENHUM"}).codigo, 3);
    loja.Banco()->ExecuteDirect("drop table SATRIB");
    EXPECT_EQ(loja.Roda({"--confere", "LOJA"}).codigo, 2);
}

}  // namespace
}  // namespace wkd
