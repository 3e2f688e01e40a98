// A whole update of the example database on the SQL Server that the environment variable WKD_SQLSERVER names.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "Arquivos.h"
#include "CasosSqlServer.h"
#include "Linhas.h"
#include "LojaSqlServer.h"
#include "OpcoesDeTeste.h"
#include "alter/Alteracao.h"
#include "layout/Preambulo.h"
#include "plan/Plano.h"
#include "run/Atualizacao.h"
#include "tables/MarcaDaBackup.h"
#include "values/Texto.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;

class SqlServer : public testing::Test {
  protected:
    void SetUp() override {
        if (!TBancoSqlServer::Instalado()) GTEST_SKIP() << "WKD_SQLSERVER is not set";
        loja_ = std::make_unique<TLojaSqlServer>(fs::path(WKD_EXEMPLOS) / "banco.sql");
        AtualizaTabelasDoDicionario(loja_->Modulo());
        AcrescentaCasos(loja_->Modulo());
        EmpacotaCasos(loja_->Pasta() / "pacote.zip");
        loja_->Modulo().nomeAlias = "LOJA";
        fs::create_directory(loja_->Pasta() / "layouts");
        loja_->Modulo().SQLConnection1.Aliases().INIGravaString("LOJA", "RELATORIO",
                                                                (loja_->Pasta() / "layouts/").string());
    }

    void Atualiza() {
        TEstado estado;
        TAtualizacao(loja_->Modulo(), OpcoesDeTeste(loja_->Pasta().Caminho()), estado).Executa();
    }

    TConnection& Conexao() { return loja_->Conexao(); }
    std::string Le(std::string_view sql) { return Linhas(Conexao(), sql); }

    void ConfereRelatoriosEArquivos();
    void ConfereCasos();
    void ConfereCorrecoes();
    void ConfereQueNadaFalta();

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

void SqlServer::ConfereRelatoriosEArquivos() {
    EXPECT_EQ(Le("select NOME from TRELATORIOS order by NOME"), "CLIENTES.RTM;NOTAS0.RTM;VENDAS POR CIDADE.RTM");
    EXPECT_EQ(Conteudo(Conexao(), "TRELATORIOS where NOME = 'NOTAS0.RTM'", {"ARQUIVO"}),
              LeArquivo(fs::path(WKD_EXEMPLOS) / "pacote" / "Notas0.rtm"));
    EXPECT_TRUE(fs::exists(loja_->Pasta() / "layouts" / "Notas0.rtm"));
    EXPECT_EQ(Le("select ARQUIVO, VERSAO from TARQ_VER order by ARQUIVO"), "Ação.ini|7.17;Menu.cfg|7.17");
}

void SqlServer::ConfereCasos() {
    EXPECT_EQ(Conteudo(Conexao(), "TMEIO", {"CODIGO", "NOME"}), "1|um\n2|dois");
    EXPECT_EQ(Le("select CODIGO, QUANTO from TCHAVE"), "A|42");
    EXPECT_EQ(Le("select CODIGO, \"ORDER\" from BTCHAVE"), "A|3") << "a column that the dictionary does not know";
    EXPECT_EQ(Coluna(Conexao().Colunas("TCHAVE"), "QUANTO").tipoSql, "int");
    EXPECT_EQ(Le("select TEXTO, VALOR, QUANTO from TSEMCHAVE"), "sem chave|1.5|7");
    EXPECT_EQ(Coluna(Conexao().Colunas("TLONGA"), "TEXTO").tamanho, 1998);
    EXPECT_EQ(Le("select TEXTO from TLONGA"), "longo");
    EXPECT_EQ(Coluna(Conexao().Colunas("TPRESA"), "B").tamanho, 9);
    EXPECT_EQ(Coluna(Conexao().Colunas("TPRESA"), "C").tipo, TTipoDado::Flutuante);
    EXPECT_FALSE(ColunaDeNome(Conexao().Colunas("TVIRABLOB"), "TEXTO_TMP"));
}

/// Some servers of that language say themselves what they lack.
void SqlServer::ConfereCorrecoes() {
    auto recusadas = loja_->Tela().memo1;
    std::erase_if(recusadas, [](const auto& linha) {
        return !linha.starts_with("Erro rodando a query") || linha.find("not currently supported") != std::string::npos;
    });
    ASSERT_EQ(recusadas.size(), 1u) << Junta(recusadas, "\n");
    EXPECT_TRUE(recusadas[0].starts_with("Erro rodando a query: Up401I_4 ")) << recusadas[0];
}

void SqlServer::ConfereQueNadaFalta() {
    const auto plano = Planeja(loja_->Modulo(), OpcoesDeTeste(loja_->Pasta().Caminho()), {});
    ASSERT_TRUE(plano);
    for (const auto& tabela : plano->tabelas) {
        if (tabela.motivo.find("não chegou ao fim") != std::string::npos) continue;  // what was refused is tried again
        EXPECT_EQ(tabela.acao, TAcaoDaTabela::Nada) << tabela.nome << tabela.motivo;
    }
    EXPECT_TRUE(plano->correcoes.empty() && plano->ajustes.empty() && plano->dicionario.empty());
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
    SCOPED_TRACE(Junta(tela.memo2, "\n") + Junta(tela.infos, "\n"));

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
    EXPECT_FALSE(TTelaDeTeste::Contem(tela.memo2, "conteúdo diferente"));
    EXPECT_NE(LeArquivo(loja_->Pasta() / "AtualizaWKD.rejeitados.jsonl").find("TG_CONTAS"), std::string::npos);

    ConfereRelatoriosEArquivos();
    ConfereCasos();
    ConfereCorrecoes();
    ConfereQueNadaFalta();
}

TEST_F(SqlServer, ATableThatTheServerWouldNotCreateIsNotDropped) {
    Conexao().ExecuteDirect(
        "update SATRIB set TIPO = 'ftString', TAMANHO = 5000 where ARQUIVO = 'TCHAVE' and NOME = 'QUANTO'");
    const auto antes = Conexao().NomesDeTabelas();
    TTB& tb = loja_->Modulo().Atualiza;
    EXPECT_FALSE(tb.ReCriaTabela("TCHAVE"));
    EXPECT_NE(tb.Erro().mensagem.find("5000"), std::string::npos) << tb.Erro().mensagem;
    EXPECT_EQ(Le("select CODIGO, QUANTO from TCHAVE"), "A|42");
    EXPECT_EQ(Conexao().NomesDeTabelas(), antes);
    EXPECT_FALSE(tb.ImpedimentoParaCriar("TMEIO"));
    EXPECT_FALSE(Conexao().InTransaction());
}

TErroBanco Dependencia(std::int64_t codigo) {
    TErroBanco::TDados dados;
    dados.mensagem = "an object is dependent on the column";
    dados.codigoNativo = codigo;
    return TErroBanco(dados);
}

TEST_F(SqlServer, WhatStandsOnAColumnGoesBeforeItsAlterationAndComesBack) {
    Conexao().ExecuteDirect("create table TATADA (A int not null primary key, B nvarchar(5), C int default 1)");
    Conexao().ExecuteDirect("create index IX_ATADA on TATADA (B desc, A)");
    const std::string altera = "alter table TATADA alter COLUMN B nvarchar(9)";
    std::vector<std::string> vistos;
    Conexao().Observa([&](std::string_view comando) {
        vistos.emplace_back(comando);
        if (vistos.size() == 1) throw Dependencia(5074);
    });
    TOpcoes opcoes;
    TEstado estado;
    TContexto ctx{loja_->Modulo(), opcoes, estado, "", ""};
    const auto resultado = ExecutaNaColuna(ctx, "TATADA", "B", altera);
    Conexao().Observa(nullptr);
    EXPECT_TRUE(resultado) << resultado.Mensagem();
    EXPECT_EQ(Maiusculas(Junta(vistos, "\n")).find("ADD CONSTRAINT"), std::string::npos);
    EXPECT_EQ(Coluna(Conexao().Colunas("TATADA"), "B").tamanho, 9);
    const auto indices = Conexao().Indices("TATADA");
    ASSERT_EQ(indices.size(), 1u);
    EXPECT_EQ(Maiusculas(Junta(indices[0].colunas, ",")), "B,A");

    vistos.clear();
    Conexao().Observa([&](std::string_view comando) {
        vistos.emplace_back(comando);
        if (vistos.size() == 1) throw Dependencia(4922);
    });
    ExecutaNaColuna(ctx, "TATADA", "C", "alter table TATADA drop column C");
    Conexao().Observa(nullptr);
    EXPECT_TRUE(std::ranges::any_of(
        vistos, [](const auto& comando) { return comando.starts_with("alter table TATADA drop constraint "); }));
}

}  // namespace
}  // namespace wkd
