// What an update rejected, put back: from the rejects file into a real database.
#include "copy/Reposicao.h"

#include <gtest/gtest.h>

#include "Arquivos.h"
#include "BancoTemporario.h"
#include "Linhas.h"
#include "PastaTemporaria.h"
#include "rows/WKDQuery.h"

namespace wkd {
namespace {

std::string Linha(const std::string& alias, const std::string& tabela, const std::string& valores) {
    return "{\"alias\": \"" + alias + "\", \"tabela\": \"" + tabela +
           "\", \"etapa\": \"Voltar backup\", \"chave\": " + "{\"COD\": 1}, \"erro\": \"recusado\", \"valores\": {" +
           valores + "}}\n";
}

class Reposicao : public testing::Test {
  protected:
    Reposicao() {
        for (const char* comando :
             {"create table TCLI (COD integer not null primary key, NOME varchar(10) not null, VALOR numeric(18,4), "
              "FOTO blob sub_type 0, DATA timestamp)",
              "insert into TCLI (COD, NOME) values (2, 'igual')", "insert into TCLI (COD, NOME) values (3, 'outro')",
              "create table TSEM (A integer, B varchar(5))"})
            banco_.Conexao().ExecuteDirect(comando);
    }
    TReposicao Repoe() { return RepoeRejeitadas(banco_.Conexao(), pasta_.Caminho(), "loja"); }
    std::int64_t Conta(const std::string& resto) {
        return ContaRegistros(banco_.Conexao(), "select count(*) as total from " + resto);
    }
    std::string Arquivo() const { return LeArquivo(ArquivoDeRejeitados(pasta_.Caminho())); }
    void Escreve(const std::string& texto) { EscreveArquivo(ArquivoDeRejeitados(pasta_.Caminho()), texto); }

    TPastaTemporaria pasta_;
    TBancoTemporario banco_;
};

TEST_F(Reposicao, RowsThatFitComeBackOnceAndTheRestStaysWithItsReason) {
    Escreve(Linha("LOJA", "TCLI",
                  "\"COD\": 1, \"NOME\": \"ação\", \"VALOR\": 12345678901234.5678, \"FOTO\": {\"base64\": \"AAEC\"}, "
                  "\"DATA\": \"2020-01-02 03:04:05.6789\"") +
            Linha("LOJA", "TCLI", "\"COD\": 2, \"NOME\": \"igual\"") +
            Linha("LOJA", "TCLI", "\"COD\": 3, \"NOME\": \"este\"") +
            Linha("LOJA", "TCLI", "\"COD\": 4, \"NOME\": null") +
            Linha("LOJA", "TCLI", "\"COD\": 5, \"NOME\": \"x\", \"ANTIGA\": \"v\"") +
            Linha("LOJA", "TCLI", "\"COD\": 6, \"NOME\": \"longo demais para ela\"") +
            Linha("LOJA", "TNAOHA", "\"COD\": 1") + Linha("FILIAL", "TCLI", "\"COD\": 7, \"NOME\": \"dela\"") +
            Linha("LOJA", "TSEM", "\"A\": 1, \"B\": \"b\"") +
            "{\"tabela\": \"TCLI\", \"valores\": {\"COD\": 8, \"NOME\": \"antiga\"}}\nnada disto é JSON\n"
            "{\"alias\": \"LOJA\", \"tab");  // cut by a full disk
    EXPECT_EQ(RejeitadasAbertas(pasta_.Caminho(), "LOJA"),
              (std::map<std::string, std::int64_t>{{"TCLI", 6}, {"TNAOHA", 1}, {"TSEM", 1}}));
    const auto primeira = Repoe();
    EXPECT_EQ(primeira.repostas, 2);
    EXPECT_EQ(primeira.presentes, 1);
    EXPECT_EQ(primeira.antigas, 1);
    std::string motivos;
    for (const auto& linha : primeira.ficam) motivos += linha.tabela + ": " + linha.motivo + "\n";
    for (const char* motivo : {"outro registro com a mesma chave", "validation error", "não tem a coluna ANTIGA",
                               "TNAOHA: a tabela não existe"})
        EXPECT_NE(motivos.find(motivo), std::string::npos) << motivo << "\n" << motivos;
    EXPECT_EQ(primeira.ficam.size(), 5u) << motivos;
    EXPECT_EQ(Conta("TCLI where COD = 1 and NOME = 'ação' and VALOR = 12345678901234.5678 and octet_length(FOTO) = 3"
                    " and DATA = '2020-01-02 03:04:05.6789'"),
              1);
    EXPECT_EQ(Conta("TCLI"), 3);
    EXPECT_EQ(Conta("TSEM"), 1);

    const std::string depois = Arquivo();
    const auto segunda = Repoe();
    EXPECT_EQ(segunda.repostas + segunda.presentes, 0);
    EXPECT_EQ(segunda.ficam.size(), 5u);
    EXPECT_EQ(Arquivo(), depois);

    banco_.Conexao().ExecuteDirect("alter table TCLI alter NOME type varchar(40)");
    banco_.Conexao().ExecuteDirect("alter table TCLI add ANTIGA varchar(5)");
    EXPECT_EQ(Repoe().repostas, 2);
    EXPECT_EQ(Conta("TCLI"), 5);
    EXPECT_EQ(RejeitadasAbertas(pasta_.Caminho(), "LOJA"),
              (std::map<std::string, std::int64_t>{{"TCLI", 2}, {"TNAOHA", 1}}));
}

TEST_F(Reposicao, AKillBetweenRowAndMarkPutsNothingBackTwice) {
    for (const char* tabela : {"TCLI", "TSEM"}) {
        const std::string valores =
            tabela == std::string("TCLI") ? "\"COD\": 9, \"NOME\": \"n\"" : "\"A\": 9, \"B\": \"n\"";
        Escreve(Linha("LOJA", tabela, valores));
        ASSERT_EQ(Repoe().repostas, 1);
        std::string texto = Arquivo();
        texto.pop_back();
        Escreve(texto.substr(0, texto.rfind('\n') + 1));  // without the last mark
        const auto outra = Repoe();
        EXPECT_EQ(outra.repostas, 0);
        EXPECT_EQ(outra.presentes, 1);
        EXPECT_EQ(Conta(std::string(tabela) + (tabela == std::string("TCLI") ? " where COD = 9" : " where A = 9")), 1);
    }
}

/// A row that the table had before is not the one that was being put back.
TEST_F(Reposicao, AKillBeforeTheRowLosesNoTwinInATableWithoutKey) {
    banco_.Conexao().ExecuteDirect("insert into TSEM values (9, 'n')");
    Escreve(Linha("LOJA", "TSEM", "\"A\": 9, \"B\": \"n\""));
    ASSERT_EQ(Repoe().repostas, 1);
    banco_.Conexao().ExecuteDirect("delete from TSEM");
    banco_.Conexao().ExecuteDirect("insert into TSEM values (9, 'n')");
    std::string texto = Arquivo();
    texto.pop_back();
    Escreve(texto.substr(0, texto.rfind('\n') + 1));  // as it is between the announcement and the row
    EXPECT_EQ(Repoe().repostas, 1);
    EXPECT_EQ(Conta("TSEM where A = 9"), 2);
}

TEST_F(Reposicao, WhatIsNotPutBackIsCounted) {
    const std::string semChave =
        "{\"alias\": \"LOJA\", \"tabela\": \"TSEM\", \"etapa\": \"e\", \"chave\": {}, \"erro\": \"x\", \"valores\": "
        "{\"A\": 5, \"B\": \"longo demais\"}}\n";
    const std::string valor =
        "{\"alias\": \"LOJA\", \"tabela\": \"TCLI\", \"etapa\": \"e\", \"chave\": {\"COD\": 2}, \"erro\": \"x\", "
        "\"campo\": \"NOME\", \"valor\": \"outro\"}\n";
    const std::string gatilho =
        "{\"alias\": \"LOJA\", \"tabela\": \"TCLI\", \"etapa\": \"Gatilho\", \"chave\": {}, \"erro\": \"x\", "
        "\"campo\": \"TG\", \"valor\": \"fonte\"}\n";
    Escreve(semChave + semChave + valor + gatilho);
    const auto listadas = ListaRejeitadas(pasta_.Caminho());  // of a rehearsal: a row without key by what it holds
    ASSERT_EQ(listadas.size(), 3u);
    EXPECT_NE(listadas[0].chave.find("longo demais"), std::string::npos) << listadas[0].chave;
    const auto reposicao = Repoe();
    EXPECT_EQ(reposicao.valores, 2);
    EXPECT_EQ(reposicao.iguais, 1);
    ASSERT_EQ(reposicao.ficam.size(), 1u);
    EXPECT_EQ(Conta("TCLI where COD = 2 and NOME = 'igual'"), 1);
}

}  // namespace
}  // namespace wkd
