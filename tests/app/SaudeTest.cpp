// What plan and update say of the database as a whole, from outside.
#include <gtest/gtest.h>

#include <functional>
#include <nlohmann/json.hpp>

#include "BancoTemporario.h"
#include "ProgramaApoio.h"

namespace wkd {
namespace {

using TJson = nlohmann::json;

/// Firebird's tool on the database, which nobody may have open.
void Gfix(const TProgramaInstalado& loja, std::vector<std::string> opcoes) {
    const std::string banco = ParametrosFirebird(loja / "loja.fdb").Valor("Database");
    opcoes.insert(opcoes.end(), {"-user", "SYSDBA", "-password", "masterkey", banco});
    const auto gfix = RodaPrograma("/usr/bin/gfix", opcoes, loja / ".");
    ASSERT_EQ(gfix.codigo, 0) << gfix.erros;
}

/// But that of a client library of 3.0 with a server of 4.0, where the tests have one.
std::string Tipos(const TJson& lista) {
    std::string tipos;
    for (const auto& um : lista)
        if (um.at("tipo") != "cliente-antigo") tipos += (tipos.empty() ? "" : " ") + um.at("tipo").get<std::string>();
    return tipos;
}

struct TCaso {
    std::vector<std::string> gfix;
    int plano;  // its exit code
    const char *avisos, *achados;
    int atualizacao;  // its exit code
};

TEST(Saude, ThePlanTellsAndOnlyWhatWouldStopTheRunIsAFinding) {
    const TCaso casos[] = {
        {{}, 10, "escritas-nao-forcadas", "", 0},
        {{"-write", "sync"}, 10, "", "", 0},
        {{"-mode", "read_only"}, 11, "escritas-nao-forcadas", "so-leitura", 2},
    };
    for (const auto& caso : casos) {
        SCOPED_TRACE(caso.achados);
        const TProgramaInstalado loja;
        if (!caso.gfix.empty()) Gfix(loja, caso.gfix);
        const auto saida = loja.Roda({"--plano", "LOJA", "pacote.zip", "--json"});
        EXPECT_EQ(saida.codigo, caso.plano) << saida.erros;
        const auto plano = TJson::parse(saida.saida, nullptr, false);
        EXPECT_EQ(Tipos(plano.at("avisos")), caso.avisos);
        EXPECT_EQ(Tipos(plano.at("achadosAntes")), caso.achados);
        EXPECT_EQ(loja.Roda({"--plano", "LOJA", "pacote.zip"}).Diz("\nSobre o banco:\n"), !plano.at("avisos").empty());

        const auto feita = loja.Atualiza();
        EXPECT_EQ(feita.codigo, caso.atualizacao) << feita.saida << feita.erros;
        EXPECT_FALSE(feita.Diz("Aviso:")) << feita.saida;
        const auto relatorio = TJson::parse(loja.Arquivo("AtualizaWKD.relatorio.json"));
        EXPECT_EQ(Tipos(relatorio.at("avisos")), caso.atualizacao == 0 ? caso.avisos : "");
        const bool naPagina = loja.Arquivo("AtualizaWKD.relatorio.html").find("Sobre o banco") != std::string::npos;
        EXPECT_EQ(naPagina, !relatorio.at("avisos").empty());
    }
}

TEST(Saude, ATableWithHardlyAVersionLeftIsToldBeforeTheFirstChange) {
    const TProgramaInstalado loja;
    {
        const auto banco = loja.Banco();
        for (int i = 1; i <= 210; ++i)
            banco->ExecuteDirect("alter table TCLI_CON alter FANTASIA type varchar(" + std::to_string(40 + i) + ")");
    }
    const auto feita = loja.Atualiza();
    const auto aviso =
        feita.saida.find("Aviso: tabelas que quase esgotaram as 255 versões que o banco guarda: TCLI_CON ");
    EXPECT_NE(aviso, std::string::npos) << feita.saida;
    EXPECT_LT(aviso, feita.saida.find("Atualizou o arquivo: "));
    EXPECT_FALSE(loja.Atualiza().Diz("Aviso:")) << "nothing changes any more";
}

TEST(Saude, AKeyTooLongForThePagesIsAFindingOfItsTable) {
    const TProgramaInstalado loja;
    NoPacote(loja, "SAtrib.WKD", "NOME=\"DOCUMENTO\" TIPO=\"ftString\" TAMANHO=\"30\"",
             "NOME=\"DOCUMENTO\" TIPO=\"ftString\" TAMANHO=\"1700\"");
    const auto saida = loja.Roda({"--plano", "LOJA", "pacote.zip"});
    EXPECT_EQ(saida.codigo, 11);
    EXPECT_TRUE(saida.Diz("! chave-longa chave primária: o índice teria chaves de 2.135 bytes, e páginas de 8.192"))
        << saida.saida;
    EXPECT_TRUE(loja.Atualiza().Diz("key size")) << "what the server says to it";
}

}  // namespace
}  // namespace wkd
