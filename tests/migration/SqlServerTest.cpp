// A whole update of the example database on the SQL Server that the environment variable WKD_SQLSERVER names.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "Arquivos.h"
#include "Atualizacao.h"
#include "ColunaPresa.h"
#include "CompactaZip.h"
#include "Linhas.h"
#include "LojaSqlServer.h"
#include "OpcoesDeTeste.h"
#include "TBComandos.h"
#include "Texto.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;

class SqlServer : public testing::Test {
  protected:
    void SetUp() override {
        if (!TBancoSqlServer::Instalado()) GTEST_SKIP() << "WKD_SQLSERVER is not set";
        loja_ = std::make_unique<TLojaSqlServer>(fs::path(WKD_EXEMPLOS) / "banco.sql");
        std::vector<fs::path> arquivos;
        for (const auto& entrada : fs::directory_iterator(fs::path(WKD_EXEMPLOS) / "pacote"))
            arquivos.push_back(entrada.path());
        CompactaZip(arquivos, loja_->Pasta() / "pacote.zip");
    }

    void Atualiza() {
        TEstado estado;
        TAtualizacao(loja_->Modulo(), OpcoesDeTeste(loja_->Pasta().Caminho()), estado).Executa();
    }

    TConnection& Conexao() { return loja_->Conexao(); }
    std::string Le(std::string_view sql) { return Linhas(Conexao(), sql); }

    std::unique_ptr<TLojaSqlServer> loja_;
};

constexpr std::string_view kTabelas[] = {"TESTADO",   "TCIDADE",  "TCLI_CON",     "TFORNECE",
                                         "TUNIDADE",  "TPRODUTO", "TESTOQUE",     "TVENDEDOR",
                                         "TFORMA_PG", "TVENDA",   "TVENDA_ITENS", "TCONTAS_REC"};

/// Rows of a table in the columns given, sorted, a blob by its content.
std::string Conteudo(TConnection& conexao, std::string_view tabela, const std::vector<std::string>& colunas) {
    auto linhas = Divide(Linhas(conexao, "select " + Junta(colunas, ",") + " from " + std::string(tabela)), ';');
    std::ranges::sort(linhas);
    return Junta(linhas, "\n");
}

std::vector<std::string> NomesDasColunas(TConnection& conexao, std::string_view tabela) {
    std::vector<std::string> nomes;
    for (const auto& coluna : conexao.Colunas(tabela)) nomes.push_back(coluna.nome);
    return nomes;
}

const TColunaFisica& Coluna(const std::vector<TColunaFisica>& colunas, std::string_view nome) {
    const auto* coluna = ColunaDeNome(colunas, nome);
    if (!coluna) throw std::runtime_error("no column " + std::string(nome));
    return *coluna;
}

TEST_F(SqlServer, AWholeUpdateCreatesAltersRebuildsAndKeepsEveryRow) {
    Conexao().ExecuteDirect("create index IX_CLIENTE on TCONTAS_REC (VALOR)");
    Conexao().ExecuteDirect("create trigger TG_CONTAS on TCONTAS_REC after delete as select 1");
    struct TAntes {
        std::vector<std::string> colunas;
        std::string conteudo;
    };
    std::map<std::string_view, TAntes> antes;
    for (const auto tabela : kTabelas) {
        antes[tabela].colunas = NomesDasColunas(Conexao(), tabela);
        antes[tabela].conteudo = Conteudo(Conexao(), tabela, antes[tabela].colunas);
    }
    Atualiza();
    const auto& tela = loja_->Tela();

    for (const auto& [tabela, era] : antes) {
        if (tabela == "TCLI_CON") continue;  // of which a column becomes a number and the lookups are refreshed
        EXPECT_EQ(Conteudo(Conexao(), tabela, era.colunas), era.conteudo) << tabela;
    }
    const auto clientes = Conexao().Colunas("TCLI_CON"), produtos = Conexao().Colunas("TPRODUTO");
    EXPECT_EQ(Coluna(clientes, "NOME").tamanho, 60);
    EXPECT_EQ(Coluna(clientes, "LIMITE_CREDITO").tipo, TTipoDado::Flutuante);
    EXPECT_EQ(Coluna(clientes, "EMAIL").tipoSql, "nvarchar(100)");
    EXPECT_EQ(Coluna(produtos, "DESCRICAO").tamanho, 120);
    EXPECT_EQ(Troca(Coluna(produtos, "ORIGEM").padrao, "'", ""), "0");
    EXPECT_EQ(Coluna(Conexao().Colunas("TCONTAS_REC"), "DOCUMENTO").tamanho, 30);
    EXPECT_EQ(Maiusculas(Junta(Conexao().ChavePrimaria("TCONTAS_REC").colunas, ",")), "DOCUMENTO,PARCELA");
    EXPECT_EQ(Maiusculas(Junta(Conexao().ChavePrimaria("TNOTA_FISCAL").colunas, ",")), "SERIE,NUMERO");
    EXPECT_EQ(Le("select count(*) from BTCONTAS_REC"), "40");
    EXPECT_EQ(Le("select count(*) from SARQUIVO where VERSAO = -1"), "0");
    const auto indices = Conexao().Indices("TCONTAS_REC");
    EXPECT_TRUE(std::ranges::any_of(indices, [](const auto& i) { return IgualSemCaixa(i.nome, "IX_CLIENTE"); }));
    EXPECT_TRUE(TTelaDeTeste::Contem(tela.memo2, "gatilhos não recriados")) << Junta(tela.memo2, "\n");
    EXPECT_FALSE(TTelaDeTeste::Contem(tela.memo2, "ATENÇÃO"));
    EXPECT_FALSE(TTelaDeTeste::Contem(tela.memo2, "Conteúdo diferente"));
    EXPECT_NE(LeArquivo(loja_->Pasta() / "AtualizaWKD.rejeitados.jsonl").find("TG_CONTAS"), std::string::npos);
}

TErroBanco Dependencia(std::int64_t codigo) {
    TErroBanco::TDados dados;
    dados.mensagem = "an object is dependent on the column";
    dados.codigoNativo = codigo;
    return TErroBanco(dados);
}

TEST_F(SqlServer, WhatStandsOnAColumnGoesBeforeItsAlterationAndComesBack) {
    Conexao().ExecuteDirect("create table TPRESA (A int not null primary key, B nvarchar(5), C int default 1)");
    Conexao().ExecuteDirect("create index IX_PRESA on TPRESA (B desc, A)");
    const std::string altera = "alter table TPRESA alter COLUMN B nvarchar(9)";
    std::vector<std::string> vistos;
    Conexao().Observa([&](std::string_view comando) {
        vistos.emplace_back(comando);
        if (vistos.size() == 1) throw Dependencia(5074);
    });
    TOpcoes opcoes;
    TEstado estado;
    TContexto ctx{loja_->Modulo(), opcoes, estado, "", ""};
    const auto resultado = ExecutaNaColuna(ctx, "TPRESA", "B", altera);
    Conexao().Observa(nullptr);
    EXPECT_TRUE(resultado) << resultado.Mensagem();
    EXPECT_EQ(Maiusculas(Junta(vistos, "\n")).find("ADD CONSTRAINT"), std::string::npos);
    EXPECT_EQ(Coluna(Conexao().Colunas("TPRESA"), "B").tamanho, 9);
    const auto indices = Conexao().Indices("TPRESA");
    ASSERT_EQ(indices.size(), 1u);
    EXPECT_EQ(Maiusculas(Junta(indices[0].colunas, ",")), "B,A");

    vistos.clear();
    Conexao().Observa([&](std::string_view comando) {
        vistos.emplace_back(comando);
        if (vistos.size() == 1) throw Dependencia(4922);
    });
    ExecutaNaColuna(ctx, "TPRESA", "C", "alter table TPRESA drop column C");
    Conexao().Observa(nullptr);
    EXPECT_TRUE(std::ranges::any_of(
        vistos, [](const auto& comando) { return comando.starts_with("alter table TPRESA drop constraint "); }));
}

}  // namespace
}  // namespace wkd
