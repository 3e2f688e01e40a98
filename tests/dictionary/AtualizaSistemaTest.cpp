#include "layout/AtualizaSistema.h"

#include <gtest/gtest.h>

#include <fstream>

#include "Linhas.h"
#include "ModuloTemporario.h"

namespace wkd {
namespace {

class AtualizaSistemaTest : public ::testing::Test {
  protected:
    AtualizaSistemaTest() {
        pasta_.Recria();
        Executa(
            "create table SISTEMA (CODIGO integer not null, NOME varchar(10), UTL_ATUALIZACAO timestamp, VALOR "
            "numeric(9,2), "
            "LOGO blob, DOBRO computed by (VALOR * 2))");
        for (const char* tabela : {"SPESQ", "SPESQ_USER"})
            Executa("create table " + std::string(tabela) + " (ARQUIVO varchar(50), NOMEPESQUISA varchar(50))");
        Executa("insert into SISTEMA (CODIGO, NOME) values (99, 'velho')");
        Executa("insert into SPESQ values ('TCLI', 'VELHA')");
        Executa("insert into SPESQ_USER values ('TCLI', 'TCLI_P_U_1')");
        dm_.AtualizaListaDeTabelas();
    }

    void Executa(const std::string& sql) { dm_.SQLConnection1.ExecuteDirect(sql); }

    /// Packet of text columns ("bin.hex" of the column LOGO); `linhas` are ROW elements without brackets.
    void Pacote(const std::string& arquivo, const std::vector<std::string>& campos,
                const std::vector<std::string>& linhas) {
        std::ofstream saida(pasta_.Caminho() / arquivo);
        saida << R"(<?xml version="1.0" standalone="yes"?>  <DATAPACKET Version="2.0"><METADATA><FIELDS>)";
        for (const auto& campo : campos)
            saida << "<FIELD attrname=\"" << campo << "\" fieldtype="
                  << (campo == "LOGO" ? R"("bin.hex" SUBTYPE="Binary"/>)" : R"("string" WIDTH="60"/>)");
        saida << "</FIELDS><PARAMS/></METADATA><ROWDATA>";
        for (const auto& linha : linhas) saida << "<ROW " << linha << "/>";
        saida << "</ROWDATA></DATAPACKET>";
    }

    std::string Linhas(std::string_view sql) { return wkd::Linhas(dm_.SQLConnection1, sql); }

    std::vector<std::string> Nomes(const std::vector<std::filesystem::path>& arquivos) {
        std::vector<std::string> nomes;
        for (const auto& arquivo : arquivos) nomes.push_back(arquivo.filename().string());
        return nomes;
    }

    TModuloTemporario modulo_;
    TDataModulo& dm_ = modulo_.Modulo();
    TPastaDeTrabalho pasta_{modulo_.Pasta()};
};

TEST_F(AtualizaSistemaTest, RefillsTheTablesOfTheFilesByFieldName) {
    Pacote("Sistema.v2.wkd", {"nome", "UTL_ATUALIZACAO", "DOBRO", "LOGO", "CODIGO", "VALOR"},
           {R"(nome="ação" UTL_ATUALIZACAO="2001-02-03 04:05:06" DOBRO="7" LOGO="AAH/" CODIGO="1" VALOR="12,5")",
            R"(nome="" CODIGO="2")"});
    Pacote("SARQUIVO.WKD", {"NAO"}, {R"(NAO="1")"});
    Pacote("SAtrib.WKD", {"NAO"}, {R"(NAO="1")"});
    EXPECT_TRUE(AtualizaSistema(dm_, pasta_).empty());

    EXPECT_EQ(Linhas("select CODIGO, NOME, VALOR, octet_length(LOGO), DOBRO from SISTEMA order by 1"),
              "1|ação|12.50|3|25.00;2||<null>|<null>|<null>");
    EXPECT_EQ(ContaRegistros(dm_.SQLConnection1,
                             "select count(*) from SISTEMA where UTL_ATUALIZACAO between dateadd(-5 minute to "
                             "current_timestamp) and dateadd(1 minute to current_timestamp)"),
              2);
    EXPECT_EQ(Linhas("select * from SPESQ order by 2"), "TCLI|TCLI_P_U_1;TCLI|VELHA");
    EXPECT_TRUE(modulo_.Tela().memo2.empty());
    EXPECT_EQ(modulo_.Tela().atuais.back(), "Parado.");
    EXPECT_EQ(modulo_.Tela().PbAtual().Posicao(), 0);
}

TEST_F(AtualizaSistemaTest, AFileThatFailsLeavesItsTableAndTheNextFollows) {
    const struct {
        std::vector<std::string> campos, linhas;
    } casos[] = {
        {{"CODIGO", "NOME"}, {R"(CODIGO="1" NOME="a")", R"(CODIGO="2" NOME="longo demais")"}},
        {{"CODIGO", "NOME"}, {R"(CODIGO="1")", R"(NOME="sem")"}},
        {{"CODIGO", "VALOR"}, {R"(CODIGO="um" VALOR="1")"}},
        {{"OUTRO"}, {R"(OUTRO="1")"}},
        {{"CODIGO"}, {R"(CODIGO="1)"}},  // damaged
    };
    Pacote("SPESQ.WKD", {"ARQUIVO", "NOMEPESQUISA"}, {R"(ARQUIVO="TCLI" NOMEPESQUISA="NOVA")"});
    Pacote("SPESQ_USER where 1=1.wkd", {"ARQUIVO"}, {});
    for (const auto& [campos, linhas] : casos) {
        SCOPED_TRACE(linhas.front());
        Pacote("SISTEMA.WKD", campos, linhas);
        modulo_.Tela().memo2.clear();
        Executa("delete from SPESQ");
        const auto adiados = AtualizaSistema(dm_, pasta_);
        EXPECT_TRUE(modulo_.Tela().memo2.empty()) << "each file is reported once";
        RecarregaAdiados(dm_, adiados);
        EXPECT_EQ(Linhas("select CODIGO, NOME from SISTEMA"), "99|velho");
        EXPECT_EQ(Linhas("select * from SPESQ order by 2"), "TCLI|NOVA;TCLI|TCLI_P_U_1");
        ASSERT_EQ(modulo_.Tela().memo2.size(), 2U);
        EXPECT_NE(modulo_.Tela().memo2[0].find("SISTEMA.WKD"), std::string::npos);
        EXPECT_NE(modulo_.Tela().memo2[1].find("SPESQ_USER where"), std::string::npos);
        EXPECT_FALSE(dm_.SQLConnection1.InTransaction());
    }
}

TEST_F(AtualizaSistemaTest, ATableWhoseRebuildIsOpenIsEmptiedOnlyBehindIt) {
    Executa("create table SARQUIVO (NOME_ARQUIVO varchar(50), VERSAO integer)");
    Executa("insert into SARQUIVO values ('SISTEMA', -1)");
    Executa("create table BSISTEMA (CODIGO integer)");
    Executa("insert into BSISTEMA values (7)");
    dm_.AtualizaListaDeTabelas();
    Pacote("SISTEMA.WKD", {"CODIGO"}, {R"(CODIGO="1")"});
    Pacote("BSISTEMA.WKD", {"CODIGO"}, {R"(CODIGO="2")"});
    const auto adiados = AtualizaSistema(dm_, pasta_, ReconstrucoesAbertas(dm_));
    EXPECT_EQ(Nomes(adiados), (std::vector<std::string>{"BSISTEMA.WKD", "SISTEMA.WKD"}));
    RecarregaAdiados(dm_, adiados);
    EXPECT_EQ(Linhas("select CODIGO from SISTEMA") + " " + Linhas("select CODIGO from BSISTEMA"), "99 7");
    ASSERT_EQ(modulo_.Tela().memo2.size(), 2U);
    EXPECT_NE(modulo_.Tela().memo2[1].find("a reconstrução da tabela não terminou"), std::string::npos);
    Executa("update SARQUIVO set VERSAO = 2");
    RecarregaAdiados(dm_, adiados);
    EXPECT_EQ(Linhas("select CODIGO from SISTEMA") + " " + Linhas("select CODIGO from BSISTEMA"), "1 2");
}

TEST_F(AtualizaSistemaTest, FilesAheadOfTheirTablesAreLoadedAgainLater) {
    Pacote("SNOVA.WKD", {"A"}, {R"(A="1")"});
    Pacote("SPESQ.WKD", {"ARQUIVO", "NOMEPESQUISA", "TITULO"},
           {R"(ARQUIVO="TCLI" NOMEPESQUISA="NOVA" TITULO="Clientes")"});
    Pacote("SISTEMA.WKD", {"CODIGO", "NOME"}, {R"(CODIGO="1" NOME="longo demais")"});
    const auto adiados = AtualizaSistema(dm_, pasta_);
    EXPECT_EQ(Nomes(adiados), (std::vector<std::string>{"SISTEMA.WKD", "SNOVA.WKD", "SPESQ.WKD"}));
    EXPECT_EQ(Linhas("select * from SPESQ order by 2"), "TCLI|NOVA;TCLI|TCLI_P_U_1");

    Executa("alter table SPESQ add TITULO varchar(50)");
    Executa("alter table SISTEMA alter NOME type varchar(20)");
    Executa("create table SNOVA (A integer)");
    dm_.AtualizaListaDeTabelas();
    RecarregaAdiados(dm_, adiados);
    EXPECT_EQ(Linhas("select A from SNOVA"), "1");
    EXPECT_EQ(Linhas("select CODIGO, NOME from SISTEMA"), "1|longo demais");
    EXPECT_EQ(Linhas("select NOMEPESQUISA, TITULO from SPESQ order by 1"), "NOVA|Clientes;TCLI_P_U_1|<null>");
    EXPECT_TRUE(modulo_.Tela().memo2.empty());
}

TEST_F(AtualizaSistemaTest, RowsOfTheCustomersThatAPacketReplacesAreToldAndPlanned) {
    Executa("create table TCLI (CODIGO integer)");
    Executa("insert into TCLI select 1 from rdb$types rows 3");
    dm_.AtualizaListaDeTabelas();
    Pacote("TCLI.wkd", {"CODIGO"}, {R"(CODIGO="7")", R"(CODIGO="8")"});
    Pacote("SPESQ_USER.WKD", {"ARQUIVO"}, {});
    Pacote("SPESQ.WKD", {"ARQUIVO"}, {R"(ARQUIVO="TCLI")"});
    Pacote("SISTEMA.WKD", {"CODIGO"}, {R"(CODIGO="1")"});
    Pacote("TFALTA.WKD", {"CODIGO"}, {R"(CODIGO="1")"});
    std::string planejadas;
    for (const auto& troca : TrocasDeRegistros(dm_, pasta_))
        planejadas += troca.tabela + " " + std::to_string(troca.saem) + " " + std::to_string(troca.entram) + ";";
    EXPECT_EQ(planejadas, "SPESQ_USER 1 0;TCLI 3 2;");
    EXPECT_EQ(Linhas("select count(*) from TCLI"), "3");

    EXPECT_EQ(Nomes(AtualizaSistema(dm_, pasta_)), std::vector<std::string>{"TFALTA.WKD"});
    EXPECT_EQ(
        modulo_.Tela().memo1,
        (std::vector<std::string>{"Tabela SPESQ_USER: saíram 1 registro(s) e entraram 0 de SPESQ_USER.WKD do pacote",
                                  "Tabela TCLI: saíram 3 registro(s) e entraram 2 de TCLI.wkd do pacote"}));
    EXPECT_EQ(Linhas("select CODIGO from TCLI order by 1"), "7;8");
}

TEST_F(AtualizaSistemaTest, IndexesWhoseNamesAreMoreThanNamesStayOutAndAreTold) {
    Executa("create table SINDSEC (ARQUIVO varchar(50), NOME varchar(60))");
    Executa("create table SINDSECA (ARQUIVO varchar(50), NOME varchar(60), CAMPO varchar(60))");
    dm_.AtualizaListaDeTabelas();
    Pacote(
        "SINDSEC.WKD", {"ARQUIVO", "NOME"},
        {R"(ARQUIVO="TCLI" NOME="IX1")", R"(ARQUIVO="TCLI" NOME="IX2 on TCLI(A) --")", R"(ARQUIVO="TCLI" NOME="IX3")"});
    Pacote("SINDSECA.WKD", {"ARQUIVO", "NOME", "CAMPO"},
           {R"(ARQUIVO="TCLI" NOME="IX1" CAMPO="A ")", R"(ARQUIVO="TCLI" NOME="IX3" CAMPO="A")",
            R"(ARQUIVO="TCLI" NOME="IX3" CAMPO="B) --")"});
    Pacote("MON$ATTACHMENTS.WKD", {"MON$USER"}, {});
    const auto adiados = AtualizaSistema(dm_, pasta_);
    RecarregaAdiados(dm_, adiados);
    EXPECT_EQ(Linhas("select NOME from SINDSEC order by 1"), "IX1;IX3");
    EXPECT_EQ(Linhas("select NOME, CAMPO from SINDSECA"), "IX1|A ") << "a part of IX3 would be another index";
    ASSERT_EQ(modulo_.Tela().memo2.size(), 3U);
    EXPECT_TRUE(modulo_.Tela().memo2[0].starts_with("SINDSEC.WKD, registro 2, campo NOME: "));
    EXPECT_TRUE(modulo_.Tela().memo2[1].starts_with("SINDSECA.WKD, registro 3, campo CAMPO: "));
    EXPECT_NE(modulo_.Tela().memo2[2].find("não tem a tabela MON$ATTACHMENTS"), std::string::npos);
}

}  // namespace
}  // namespace wkd
