// The evidence that a run leaves beside its log.
#include <gtest/gtest.h>

#include <QRegularExpression>
#include <algorithm>
#include <nlohmann/json.hpp>

#include "BancoTemporario.h"
#include "Linhas.h"
#include "OpcoesDeTeste.h"
#include "ProgramaApoio.h"
#include "TelaDeTeste.h"
#include "process/Interrupcao.h"
#include "report/RelatorioDaExecucao.h"
#include "run/Atualizacao.h"
#include "run/RegistroDaExecucao.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;
using TJson = nlohmann::json;

TJson Tabela(const TJson& relatorio, const std::string& nome) {
    for (const auto& tabela : relatorio.at("tabelas"))
        if (tabela.at("tabela") == nome) return tabela;
    return {};
}

TEST(Relatorio, TellsWhatTheUpdateDidToEachTable) {
    const TProgramaInstalado loja;
    {
        const auto banco = loja.Banco();
        banco->ExecuteDirect("insert into TFORNECE (CODIGO, CNPJ) values ('X1', '1')");
        banco->ExecuteDirect("insert into TFORNECE (CODIGO, CNPJ) values ('X2', '1')");
        banco->ExecuteDirect("update SARQUIVO set VERSAO = 1 where NOME_ARQUIVO = 'TFORNECE'");
    }
    ASSERT_EQ(loja.Atualiza().codigo, 1);
    const TJson relatorio = TJson::parse(loja.Arquivo("AtualizaWKD.relatorio.json"));
    EXPECT_TRUE(relatorio.at("concluida").get<bool>());

    const TJson vendas = Tabela(relatorio, "TVENDA");
    EXPECT_EQ(vendas.at("acao"), "reconstruir");
    EXPECT_EQ(vendas.at("registrosAntes"), 40);
    EXPECT_EQ(vendas.at("registrosDepois"), 40);
    EXPECT_EQ(vendas.at("hash"), HashDoConteudo(*loja.Banco(), "TVENDA"));
    EXPECT_EQ(vendas.at("comandos").at(0).at("texto"), "drop table TVENDA");
    EXPECT_EQ(Tabela(relatorio, "TNOTA_FISCAL").at("acao"), "criar");
    EXPECT_EQ(Tabela(relatorio, "TESTADO").at("acao"), "nada");

    bool achado = false;
    for (const auto& erro : relatorio.at("erros")) {
        achado = achado || (erro.at("tabela") == "TFORNECE" && erro.at("tipo") == "chave-duplicada" &&
                            erro.at("mensagem").get<std::string>().find("TFORNECE_CNPJ") != std::string::npos &&
                            erro.at("providencia").get<std::string>().find("repetidos") != std::string::npos);
    }
    EXPECT_TRUE(achado) << relatorio.at("erros").dump(1);
    EXPECT_EQ(relatorio.at("erros").size(), 1u) << relatorio.at("erros").dump(1);
    bool falhou = false;
    for (const auto& correcao : relatorio.at("correcoes")) falhou = falhou || !correcao.at("erro").is_null();
    EXPECT_TRUE(falhou);  // some always fail on this server

    const std::string pagina = loja.Arquivo("AtualizaWKD.relatorio.html");
    for (const char* texto : {"Concluída com 1 erro", "TVENDA", "drop table TVENDA", "O que fazer:", "@media print"})
        EXPECT_NE(pagina.find(texto), std::string::npos) << texto;
    for (const char* deFora : {"http:", "https:", "<script", " src=", "<link", "@import", "url(", "{{", "<!-- parte"})
        EXPECT_EQ(pagina.find(deFora), std::string::npos) << deFora;

    int emPalavras = 0;
    for (const auto& passo : relatorio.at("passos")) {
        const std::string nome = passo.at("nome"), paraLer = PassoParaLer(nome);
        EXPECT_NE(pagina.find("<th scope=\"row\">" + paraLer + "</th>"), std::string::npos) << nome;
        if (nome == paraLer) continue;
        EXPECT_EQ(pagina.find(nome), std::string::npos) << "a routine's name";
        ++emPalavras;
    }
    EXPECT_GE(emPalavras, 14);
    // A narrow window has no heads: each cell says what it is, but for those of statements.
    const QRegularExpression semNome("<td(?![^>]*(data-nome|colspan))[^>]*>");
    EXPECT_FALSE(QString::fromStdString(pagina).contains(semNome));

    ASSERT_EQ(loja.Atualiza("nenhum.zip").codigo, 2);
    const TJson encerrada = TJson::parse(loja.Arquivo("AtualizaWKD.relatorio.json"));
    EXPECT_FALSE(encerrada.at("concluida").get<bool>());
    EXPECT_EQ(encerrada.at("erros").size(), 1u);
    EXPECT_NE(loja.Arquivo("AtualizaWKD.relatorio.html").find("Encerrada antes da hora"), std::string::npos);
}

TEST(Relatorio, ATextOfTheDatabaseBecomesNoMarkup) {
    TEvidencia evidencia;
    evidencia.alias = "<b>&\"";
    evidencia.tabelas.push_back({"T<1>",
                                 TAcaoDaTabela::Altera,
                                 "a < b",
                                 {{"alter '<x>'", "", "erro & cia"}},
                                 2,
                                 1,
                                 "",
                                 1,
                                 TDesfecho::NaoFeito});
    evidencia.erros.push_back(TErroDaExecucao::NaLista({.mensagem = "<script>"}, ""));
    const std::string pagina = RelatorioEmHtml(evidencia);
    EXPECT_EQ(pagina.find("<b>&"), std::string::npos);
    EXPECT_EQ(pagina.find("<script>"), std::string::npos);
    for (const char* texto : {"T&lt;1&gt;", "alter '&lt;x&gt;'", "erro &amp; cia", "&lt;b&gt;&amp;&quot;"})
        EXPECT_NE(pagina.find(texto), std::string::npos) << texto;
}

TEST(Relatorio, TheHashDependsOnValuesNotOnTheirOrder) {
    TBancoTemporario banco;
    TConnection& conexao = banco.Conexao();
    const auto hash = [&](const std::vector<std::string>& linhas) {
        conexao.ExecuteDirect("recreate table T (A integer, B varchar(20), C blob)");
        for (const auto& linha : linhas) conexao.ExecuteDirect("insert into T values (" + linha + ")");
        return HashDoConteudo(conexao, "T");
    };
    const std::string original = hash({"1, 'um', 'x'", "2, 'dois', null"});
    EXPECT_EQ(original, hash({"2, 'dois', null", "1, 'um', 'x'"}));
    const std::vector<std::vector<std::string>> outros = {
        {"1, 'um', 'y'", "2, 'dois', null"},
        {"1, 'dois', 'x'", "2, 'um', null"},
        {"1, 'um', null", "2, 'dois', 'x'"},
        {"1, 'um', 'x'", "2, 'dois', ''"},
        {"1, 'um', 'x'"},
        {"1, 'um', 'x'", "2, null, null"},
    };
    for (const auto& linhas : outros) EXPECT_NE(original, hash(linhas)) << linhas.front();
    EXPECT_EQ(hash({}), "0");
}

TEST(Relatorio, TheAdviceComesFromTheFailureNotFromTheTablesName) {
    TBancoTemporario banco;
    TConnection& conexao = banco.Conexao();
    conexao.ExecuteDirect("create table TPACOTE (A integer not null primary key, B integer check (B > 0))");
    const auto outra = banco.Outra();
    auto reserva = conexao.Reserva("TPACOTE");
    TEvidencia evidencia;
    const auto falha = [&](TConnection& qual, const char* comando) {
        try {
            qual.ExecuteDirect(comando);
        } catch (const std::exception& erro) {
            evidencia.erros.push_back(TErroDaExecucao::NosDois(ErroDe(erro), "TPACOTE", "Alterar"));
        }
    };
    falha(*outra, "insert into TPACOTE values (1, 1)");
    reserva.reset();
    falha(conexao, "insert into TPACOTE values (1, 0)");
    falha(conexao, "alter table TPACOTE adiciona C integer");
    falha(conexao, "update TPACOTE set C = 1");

    const std::pair<const char*, const char*> esperadas[] = {{"em-uso", "Feche o sistema"},
                                                             {"restricao", "Corrija na tabela os valores"},
                                                             {"sintaxe", "Corrija a causa"},
                                                             {"coluna-inexistente", "desta versão do sistema"}};
    const auto erros = TJson::parse(RelatorioEmJson(evidencia)).at("erros");
    ASSERT_EQ(erros.size(), std::size(esperadas)) << erros.dump(1);
    for (std::size_t i = 0; i < erros.size(); ++i) {
        EXPECT_EQ(erros[i].at("tipo"), esperadas[i].first) << erros[i].dump(1);
        EXPECT_NE(erros[i].at("providencia").get<std::string>().find(esperadas[i].second), std::string::npos)
            << erros[i].dump(1);
        EXPECT_FALSE(erros[i].at("codigo").is_null() || erros[i].at("comando").is_null()) << erros[i].dump(1);
    }
}

TJson DeNome(const TJson& registrados, const std::string& nome) {
    for (const auto& um : registrados)
        if (um.at("nome") == nome) return um;
    return {};
}

TEST(Relatorio, WhatWasRefusedDoesNotCountAsDone) {
    const TProgramaInstalado loja;
    {
        const auto banco = loja.Banco();
        banco->ExecuteDirect(
            "create table TNATU_OP (TIPO varchar(1), INFORMAR_PLANO_CONTAS_SAI integer check "
            "(INFORMAR_PLANO_CONTAS_SAI = 0))");
        banco->ExecuteDirect("insert into TNATU_OP values ('S', 0)");
    }
    std::string colunas = loja.Arquivo("fontes/SAtrib.WKD");
    const std::string palavra = "ARQUIVO=\"TNOTA_FISCAL\" SEQUENCIA=\"3\" NOME=\"";
    ASSERT_NE(colunas.find(palavra), std::string::npos);
    colunas.replace(colunas.find(palavra) + palavra.size(), std::string_view("COD_CLIENTE").size(), "SELECT");
    loja.Escreve("fontes/SAtrib.WKD", colunas);
    loja.Empacota();
    ASSERT_EQ(loja.Atualiza().codigo, 1);
    ASSERT_FALSE(loja.Banco()->ExisteTabela("TNOTA_FISCAL"));

    const TJson relatorio = TJson::parse(loja.Arquivo("AtualizaWKD.relatorio.json"));
    EXPECT_EQ(Tabela(relatorio, "TNOTA_FISCAL").at("acao"), "criar");
    EXPECT_EQ(Tabela(relatorio, "TNOTA_FISCAL").at("desfecho"), "não feita");
    EXPECT_EQ(Tabela(relatorio, "TVENDA").at("desfecho"), "feita");
    EXPECT_EQ(Tabela(relatorio, "TESTADO").at("desfecho"), "não se aplica");
    EXPECT_TRUE(relatorio.at("naoRodaram").empty());
    const TJson &correcoes = relatorio.at("correcoes"), recusada = DeNome(correcoes, "Up401G_1");
    EXPECT_EQ(recusada.at("desfecho"), "não feita");
    EXPECT_EQ(recusada.at("tipo"), "restricao");
    EXPECT_EQ(DeNome(correcoes, "Up401I_7").at("desfecho"), "não se aplica");
    EXPECT_EQ(DeNome(correcoes, "Up401I_7").at("tipo"), "sintaxe");
    EXPECT_EQ(DeNome(correcoes, "PlanoContas1").at("desfecho"), "feita");
    const std::string veredicto = relatorio.at("veredicto");
    EXPECT_NE(veredicto.find(", 1 tabela não feita, 1 correção não feita"), std::string::npos) << veredicto;
    const std::string pagina = loja.Arquivo("AtualizaWKD.relatorio.html");
    const auto banco = loja.Banco();
    const auto criadas = std::ranges::count_if(relatorio.at("tabelas"), [&](const TJson& tabela) {
        return tabela.at("acao") == "criar" && banco->ExisteTabela(tabela.at("tabela").get<std::string>());
    });
    for (const std::string& texto :
         {veredicto, "<b>" + std::to_string(criadas) + "</b>criadas", std::string("<b>1</b>não feitas")})
        EXPECT_NE(pagina.find(texto), std::string::npos) << texto;
    EXPECT_EQ(pagina.find("de outro servidor"), std::string::npos) << "nobody has looked";
}

TEST(Relatorio, AnInterruptedRunSaysWhereItStoppedAndWhatDidNotRun) {
    const TProgramaInstalado loja;
    TTelaDeTeste tela;
    TDataModulo dm(TAliases(loja / "WKD.ini"), tela);
    dm.SQLConnection1.SetAlias("LOJA");
    dm.SQLConnection1.Open();
    dm.SQLConnection1.Observa([](std::string_view sql) {
        if (sql == "drop table TVENDA") TInterrupcao::Pede(15);
    });
    TEstado estado;
    const TOpcoes opcoes = OpcoesDeTeste(loja / "");
    TAtualizacao atualizacao(dm, opcoes, estado);
    EXPECT_EQ(atualizacao.Executa(), TFimDaAtualizacao::Interrompida);
    TInterrupcao::Esquece();
    const bool apagada = !dm.SQLConnection1.ExisteTabela("TVENDA");

    const TJson relatorio = TJson::parse(RelatorioEmJson(atualizacao.Evidencia()));
    EXPECT_EQ(relatorio.at("veredicto").get<std::string>().rfind("Interrompida, 1 tabela ", 0), 0u);
    EXPECT_EQ(Tabela(relatorio, "TVENDA").at("desfecho"), apagada ? "pela metade" : "não feita");
    EXPECT_EQ(relatorio.at("tabelas").back().at("tabela"), "TVENDA") << "the others were not looked at";
    const auto naoRodaram = relatorio.at("naoRodaram").get<std::vector<std::string>>();
    for (const char* nome : {"TVENDA_ITENS", "AtualizaRelatorio", "QuerysPosteriores", "Dicionario_tabelas"})
        EXPECT_EQ(std::ranges::count(naoRodaram, nome), 1) << nome;
    for (const char* nome : {"TVENDA", "TESTADO", "AtualizaSistema"})
        EXPECT_EQ(std::ranges::count(naoRodaram, nome), 0) << nome;
    const std::string pagina = RelatorioEmHtml(atualizacao.Evidencia());
    EXPECT_NE(pagina.find("Não rodaram ("), std::string::npos);
    EXPECT_NE(pagina.find(", Relatórios do pacote, Arquivos do pacote, Correções depois das tabelas, "),
              std::string::npos);
}

}  // namespace
}  // namespace wkd
