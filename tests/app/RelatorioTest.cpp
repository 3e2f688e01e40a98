// The evidence that a run leaves beside its log.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "BancoTemporario.h"
#include "Linhas.h"
#include "ProgramaApoio.h"
#include "TelaDeTeste.h"
#include "report/RelatorioDaExecucao.h"
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

TEST(Relatorio, conta_o_que_a_atualizacao_fez_em_cada_tabela) {
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
        achado = achado || (erro.at("tabela") == "TFORNECE" &&
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

    ASSERT_EQ(loja.Atualiza("nenhum.zip").codigo, 2);
    const TJson encerrada = TJson::parse(loja.Arquivo("AtualizaWKD.relatorio.json"));
    EXPECT_FALSE(encerrada.at("concluida").get<bool>());
    EXPECT_EQ(encerrada.at("erros").size(), 1u);
    EXPECT_NE(loja.Arquivo("AtualizaWKD.relatorio.html").find("Encerrada antes da hora"), std::string::npos);
}

TEST(Relatorio, um_texto_do_banco_nao_vira_pagina) {
    TEvidencia evidencia;
    evidencia.alias = "<b>&\"";
    evidencia.tabelas.push_back(
        {"T<1>", TAcaoDaTabela::Altera, "a < b", {{"alter '<x>'", "", "erro & cia"}}, 2, 1, "", 1});
    evidencia.erros.push_back({{}, "", "", "<script>"});
    const std::string pagina = RelatorioEmHtml(evidencia);
    EXPECT_EQ(pagina.find("<b>&"), std::string::npos);
    EXPECT_EQ(pagina.find("<script>"), std::string::npos);
    for (const char* texto : {"T&lt;1&gt;", "alter '&lt;x&gt;'", "erro &amp; cia", "&lt;b&gt;&amp;&quot;"})
        EXPECT_NE(pagina.find(texto), std::string::npos) << texto;
}

TEST(Relatorio, o_hash_depende_dos_valores_e_nao_da_ordem) {
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

TEST(Relatorio, um_erro_mostrado_e_registrado_conta_uma_vez) {
    TTelaDeTeste janela;
    TTelaRegistrada tela(janela);
    tela.Memo2("erro da coluna X");
    tela.SetLog("erro da coluna X Query: alter table T", "T", "Query de alteração de campo");
    tela.Memo2("Tabela: T - falhou");
    tela.SetLog("falhou", "T", "Atualizar tabela");
    tela.SetLog("outro", "U", "acao");
    tela.SetLog("outro", "V", "acao");
    tela.Informacao("aviso");
    const auto erros = tela.RetiraErros();
    ASSERT_EQ(erros.size(), 5u);
    EXPECT_EQ(erros[0].tabela, "T");
    EXPECT_EQ(erros[0].mensagem, "erro da coluna X Query: alter table T");
    EXPECT_EQ(erros[1].mensagem, "Tabela: T - falhou");
    EXPECT_EQ(erros[1].acao, "Atualizar tabela");
    EXPECT_EQ(erros[4].mensagem, "aviso");
    EXPECT_EQ(janela.log.size(), 4u);
    EXPECT_EQ(janela.memo2.size(), 2u);
    EXPECT_TRUE(tela.RetiraErros().empty());
}

TEST(Relatorio, diz_o_que_fazer_com_cada_tipo_de_erro) {
    const std::pair<const char*, const char*> casos[] = {
        {"unsuccessful metadata update object TABLE \"X\" is in use", "Feche o sistema"},
        {"Esta atualização requer que todos os usuários fechem o sistema.", "Feche o sistema"},
        {"TABLE T too many versions", "backup e restauração"},
        {"A chave A de T tem 2 valores repetidos", "registros repetidos"},
        {"Outra atualização está em andamento", "Espere"},
        {"arithmetic exception, numeric overflow, or string truncation", "rejeitados"},
        {"O arquivo SARQUIVO.WKD do pacote está vazio", "pacote completo"},
        {"qualquer outra coisa", "rode a atualização de novo"},
    };
    for (const auto& [mensagem, parte] : casos)
        EXPECT_NE(Providencia(mensagem).find(parte), std::string_view::npos)
            << mensagem << ": " << Providencia(mensagem);
}

}  // namespace
}  // namespace wkd
