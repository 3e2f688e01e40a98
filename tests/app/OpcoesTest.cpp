// The options of the wizard's page on the command line: plan and run do what they say, and no more.
#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>

#include "Linhas.h"
#include "ProgramaApoio.h"
#include "Retrato.h"

namespace wkd {
namespace {

using TJson = nlohmann::json;
using TPalavras = std::vector<std::string>;

TPalavras Com(TPalavras palavras, const TPalavras& opcoes) {
    palavras.insert(palavras.end(), opcoes.begin(), opcoes.end());
    return palavras;
}

/// What is done with each table.
std::map<std::string, std::string> Acoes(const TJson& json) {
    std::map<std::string, std::string> acoes;
    for (const auto& tabela : json.at("tabelas")) acoes[tabela.at("tabela")] = tabela.at("acao");
    return acoes;
}

std::size_t Quantas(const std::map<std::string, std::string>& acoes, const std::string& acao) {
    std::size_t quantas = 0;
    for (const auto& [tabela, dela] : acoes) quantas += dela == acao;
    return quantas;
}

struct TCaso {
    TPalavras opcoes;
    std::size_t tabelas, alterar, reconstruir, nada;
    bool correcoes;
    const char* versoes;  // of TCIDADE, TVENDA and TPRODUTO in the database afterwards
};

TEST(Options, PlanAndRunDoWhatTheOptionsSay) {
    const TCaso casos[] = {
        {{}, 14, 3, 2, 7, true, "TCIDADE1 TPRODUTO5 TVENDA3"},
        {{"--todas"}, 14, 10, 2, 0, true, "TCIDADE1 TPRODUTO5 TVENDA3"},
        {{"--completo", "--linhas-por-commit=1"}, 14, 0, 12, 0, true, "TCIDADE1 TPRODUTO5 TVENDA3"},
        {{"--tabelas", "tcidade, TVENDA"}, 2, 1, 1, 0, true, "TCIDADE1 TPRODUTO4 TVENDA3"},
        {{"--tabelas=TCIDADE", "--completo"}, 1, 0, 1, 0, true, "TCIDADE1 TPRODUTO4 TVENDA2"},
        {{"--tabelas=TCIDADE", "--sem-anteriores", "--sem-posteriores"},
         1,
         1,
         0,
         0,
         false,
         "TCIDADE1 TPRODUTO4 TVENDA2"},
    };
    for (const auto& caso : casos) {
        SCOPED_TRACE(caso.opcoes.empty() ? "no option" : caso.opcoes.front() + " " + caso.opcoes.back());
        const TProgramaInstalado loja;
        const auto dito = loja.Roda(Com({"--plano", "LOJA", "pacote.zip", "--json"}, caso.opcoes));
        ASSERT_TRUE(dito.codigo == 10 || dito.codigo == 11) << dito.erros;
        const TJson plano = TJson::parse(dito.saida);
        const auto acoes = Acoes(plano);
        EXPECT_EQ(acoes.size(), caso.tabelas);
        EXPECT_EQ(Quantas(acoes, "alterar"), caso.alterar) << dito.saida;
        EXPECT_EQ(Quantas(acoes, "reconstruir"), caso.reconstruir);
        EXPECT_EQ(Quantas(acoes, "nada"), caso.nada);
        EXPECT_EQ(!plano.at("correcoes").empty(), caso.correcoes);

        const auto feito = loja.Roda(Com({"LOJA;", "pacote.zip"}, caso.opcoes));
        ASSERT_LE(feito.codigo, 1) << feito.erros;
        const TJson relatorio = TJson::parse(loja.Arquivo("AtualizaWKD.relatorio.json"));
        EXPECT_EQ(Acoes(relatorio), acoes);
        EXPECT_EQ(relatorio.at("correcoes").size(), plano.at("correcoes").size());
        EXPECT_EQ(Linhas(*loja.Banco(),
                         "select list(NOME_ARQUIVO || VERSAO, ' ') from (select NOME_ARQUIVO, VERSAO from SARQUIVO "
                         "where NOME_ARQUIVO in ('TCIDADE', 'TVENDA', 'TPRODUTO') order by NOME_ARQUIVO)"),
                  caso.versoes);
    }
}

TEST(Options, WhatCannotBeDoneEndsItBeforeAnythingBegins) {
    const TProgramaInstalado loja;
    const std::string antes = loja.Retrato();
    const TPalavras linhas[] = {{"LOJA;", "pacote.zip", "--tabelas", "TCIDADE,TNENHUMA"},
                                {"--plano", "LOJA", "pacote.zip", "--tabelas=TNENHUMA"},
                                {"--ensaio", "LOJA", "pacote.zip", "--tabelas=TNENHUMA"}};
    for (const auto& linha : linhas) {
        SCOPED_TRACE(linha.front());
        const auto saida = loja.Roda(linha);
        EXPECT_EQ(saida.codigo, 2);
        EXPECT_TRUE(saida.erros.starts_with("O pacote não tem a tabela TNENHUMA: nada foi feito.")) << saida.erros;
        EXPECT_EQ(saida.saida, "");
    }
    EXPECT_EQ(Diferencas(antes, loja.Retrato()), "");
    EXPECT_FALSE(std::filesystem::exists(loja / "AtualizaWKD.relatorio.json"));
    const auto saida = loja.Roda({"LOJA;", "pacote.zip", "--linhas-por-commit", "0"});
    EXPECT_EQ(saida.codigo, 2);
    EXPECT_TRUE(saida.Diz("um número de 1 a 100000, e não \"0\"")) << saida.erros;
    EXPECT_EQ(Diferencas(antes, loja.Retrato()), "");
    EXPECT_TRUE(loja.Roda({"LOJA;", "nenhum.zip", "--tabelas=TCIDADE"}).Diz("Arquivo de atualizção não existe"));
}

TEST(Options, SilenceLeavesErrorsAndTheExitCode) {
    const TProgramaInstalado loja;
    auto saida = loja.Roda({"--plano", "LOJA", "pacote.zip", "--silencioso"});
    EXPECT_EQ(saida.codigo, 10) << saida.erros;
    EXPECT_EQ(saida.saida + saida.erros, "");

    saida = loja.Roda({"LOJA;", "pacote.zip", "--silencioso"});
    EXPECT_EQ(saida.codigo, 0) << saida.erros;
    EXPECT_EQ(saida.saida + saida.erros, "");
    EXPECT_EQ(Linhas(*loja.Banco(), "select VERSAO from SARQUIVO where NOME_ARQUIVO = 'TVENDA'"), "3");

    saida = loja.Roda({"LOJA;", "nenhum.zip", "--silencioso"});
    EXPECT_EQ(saida.codigo, 2);
    EXPECT_EQ(saida.saida, "");
    EXPECT_NE(saida.erros.find("Arquivo de atualizção não existe"), std::string::npos) << saida.erros;
}

}  // namespace
}  // namespace wkd
