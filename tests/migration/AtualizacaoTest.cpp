// What a whole update does by its options, and when a step before the tables fails.
#include "run/Atualizacao.h"

#include <gtest/gtest.h>

#include "Linhas.h"
#include "OpcoesDeTeste.h"
#include "QuedaApoio.h"
#include "ServidorFirebird.h"
#include "TelaDeTeste.h"
#include "plan/Plano.h"
#include "values/Texto.h"

namespace wkd {
namespace {

class AtualizacaoTest : public testing::Test {
  protected:
    AtualizacaoTest() {
        molde_.CopiaPara(pasta_);
        EscreveArquivo(pasta_ / "naocria.wkd", "");
        dm_ = std::make_unique<TDataModulo>(TAliases(pasta_ / "WKD.ini"), tela_);
        dm_->SQLConnection1.SetAlias("LOJA");
    }

    TFimDaAtualizacao Atualiza(const TOpcoes& opcoes, const TConnection::TObservador& observador = {}) {
        dm_->SQLConnection1.Open();
        dm_->SQLConnection1.Observa(observador);
        TEstado estado;
        const auto fim = TAtualizacao(*dm_, opcoes, estado).Executa();
        dm_->SQLConnection1.Observa({});
        dm_->SQLConnection1.Close();
        return fim;
    }
    std::optional<TPlano> Plano(const TConnection::TObservador& observador = {}) {
        dm_->SQLConnection1.Open();
        dm_->SQLConnection1.Observa(observador);
        const struct TFecha {
            TDataModulo& dm;
            ~TFecha() {
                dm.SQLConnection1.Observa({});
                dm.SQLConnection1.Close();
            }
        } fecha{*dm_};
        return Planeja(*dm_, OpcoesDeTeste(pasta_), {});
    }
    /// Runs a statement; the dictionary of TALT afterwards.
    std::string Executa(std::string_view sql) {
        dm_->SQLConnection1.Open();
        dm_->SQLConnection1.ExecuteDirect(sql);
        const std::string colunas =
            Linhas(dm_->SQLConnection1, "select * from SATRIB where ARQUIVO = 'TALT' order by NOME");
        dm_->SQLConnection1.Close();
        return colunas;
    }
    std::string Versoes() {
        dm_->SQLConnection1.Open();
        const std::string versoes =
            Linhas(dm_->SQLConnection1, "select NOME_ARQUIVO, VERSAO from SARQUIVO order by NOME_ARQUIVO");
        dm_->SQLConnection1.Close();
        return versoes;
    }

    const TMolde molde_;
    const TPastaTemporaria raiz_;
    const std::filesystem::path pasta_ = raiz_ / "loja";
    TTelaDeTeste tela_;
    std::unique_ptr<TDataModulo> dm_;
};

TEST_F(AtualizacaoTest, UsersThatCannotBeCountedEndARunThatNeedsTheDatabaseAlone) {
    const auto recusa = [](TFalha falha) {
        return [falha](std::string_view sql) {
            if (sql.find("from csenha") != std::string_view::npos)
                throw TErroBanco({"recusado", 0, "", "", falha, false});
        };
    };
    EXPECT_THROW(Plano(recusa(TFalha::Autenticacao)), TErroBanco);
    EXPECT_TRUE(Plano(recusa(TFalha::ColunaInexistente)));
    EXPECT_EQ(Atualiza(OpcoesDeTeste(pasta_), recusa(TFalha::Autenticacao)), TFimDaAtualizacao::Encerrada);
    EXPECT_TRUE(TTelaDeTeste::Contem(tela_.infos, "recusado"));
    EXPECT_EQ(Versoes(), "TALT|1;TREC|1");
    EXPECT_EQ(Atualiza(OpcoesDeTeste(pasta_), recusa(TFalha::ObjetoInexistente)), TFimDaAtualizacao::Concluida);
    EXPECT_EQ(Versoes(), "TALT|2;TNOVA|2;TREC|2");
}

TEST_F(AtualizacaoTest, ARunReadsTheColumnsOfAllTablesOnce) {
    int leituras = 0;
    const auto conta = [&](std::string_view sql) {
        leituras += sql.find("rdb$relation_fields rf") < sql.size() && sql.find("join rdb$relations r on") < sql.size();
    };
    Atualiza(OpcoesDeTeste(pasta_));
    EXPECT_EQ(Atualiza(OpcoesDeTeste(pasta_), conta), TFimDaAtualizacao::Concluida);
    EXPECT_EQ(leituras, 1);
}

TEST_F(AtualizacaoTest, ACompleteUpdateLeavesATableThatIsNotAnalysedAlone) {
    Atualiza(OpcoesDeTeste(pasta_));
    TOpcoes opcoes = OpcoesDeTeste(pasta_);
    opcoes.tabelasSelecionadas = opcoes.modoCompleto = true;  // without a table in the list
    int mudancas = 0;
    const auto conta = [&mudancas](std::string_view sql) { mudancas += sql.starts_with("delete from satrib where"); };
    Executa("update SATRIB set SEQUENCIA = SEQUENCIA + 1");
    EXPECT_EQ(Atualiza(opcoes, conta), TFimDaAtualizacao::Concluida);
    EXPECT_EQ(mudancas, 0);
    opcoes.modoCompleto = false;
    EXPECT_EQ(Atualiza(opcoes, conta), TFimDaAtualizacao::Concluida);
    EXPECT_EQ(mudancas, 3) << "each table is altered";
}

TEST_F(AtualizacaoTest, TheDictionaryOfATableIsWrittenWhereItDiffers) {
    Atualiza(OpcoesDeTeste(pasta_));
    TOpcoes opcoes = OpcoesDeTeste(pasta_);
    opcoes.todas = true;
    int mudancas = 0;
    const auto conta = [&](std::string_view sql) { mudancas += sql.starts_with("delete from satrib where"); };
    const std::string antes = Executa("alter table SATRIB add \"Order\" integer");
    for (const char* mudanca : {"update SATRIB set SEQUENCIA = 99 where ARQUIVO = 'TALT' and NOME = 'NOME'",
                                "update SATRIB set COMENTARIO = 'meu' where ARQUIVO = 'TALT' and NOME = 'NOME'",
                                "update SATRIB set NOME = 'Nome' where ARQUIVO = 'TALT' and NOME = 'NOME'",
                                "delete from SATRIB where ARQUIVO = 'TALT' and NOME = 'NOME'",
                                "insert into SATRIB (ARQUIVO, NOME, TIPO) values ('TALT', 'SOBRA', 'ftString')",
                                "insert into SATRIB (ARQUIVO, NOME, TIPO) values ('TALT', 'U_SOBRA', 'ftString')"}) {
        EXPECT_NE(Executa(mudanca), antes);
        mudancas = 0;
        Atualiza(opcoes, conta);
        EXPECT_EQ(Executa("delete from TRBFIELD"), antes) << mudanca;
        EXPECT_EQ(mudancas, 2) << "and TREC, where the customer has a column: " << mudanca;
    }
    for (const bool comPadrao : {false, true}) {  // a row that is written would get the default
        if (comPadrao) Executa("alter table SATRIB add PADRAO integer default 7");
        mudancas = 0;
        Atualiza(opcoes, conta);
        EXPECT_EQ(mudancas, comPadrao ? 3 : 1);
    }
    Executa("alter table SATRIB drop PADRAO");
    Atualiza(opcoes);

    mudancas = 0;
    const std::string doCliente =
        Executa("insert into SATRIB_USER (ARQUIVO, NOME, TIPO, TAMANHO) values ('TALT', 'U_X', 'ftString', 5)");
    Atualiza(opcoes, conta);
    EXPECT_EQ(mudancas, 2);
    EXPECT_NE(Executa("delete from TRBFIELD"), doCliente) << "the customer's column is there, too";
}

TEST_F(AtualizacaoTest, AColumnThatTheConnectionCannotHoldOrThatIsTheCustomersCostsItselfAlone) {
    dm_->SQLConnection1.Aliases().INIGravaString("LOJA", "CharacterSet", "ISO8859_1");
    dm_->SQLConnection1.SetAlias("LOJA");
    std::vector<TColuna> novas(std::begin(kNovas), std::end(kNovas));
    novas.insert(novas.begin() + 1, {{"TALT", "Z", "ft€", 0, 0}, {"TALT", "U_SUA", "ftInteger", 0, 0}});
    Empacota(pasta_, novas);
    EXPECT_EQ(Atualiza(OpcoesDeTeste(pasta_)), TFimDaAtualizacao::Concluida);
    EXPECT_EQ(Versoes(), "TALT|2;TNOVA|2;TREC|2");
    const auto recusada = [](const auto& entrada) { return entrada.mensagem.starts_with("Coluna Z em SATRIB: "); };
    EXPECT_EQ(std::ranges::count_if(tela_.log, recusada), 1) << Junta(tela_.memo2, "\n");
    dm_->SQLConnection1.Open();
    EXPECT_EQ(Linhas(dm_->SQLConnection1, "select NOME from SATRIB where ARQUIVO = 'TALT' order by SEQUENCIA"),
              "CODIGO;NOME;VALOR;EXTRA");
}

TEST_F(AtualizacaoTest, ARowThatTheServerRefusesCostsItselfAloneAmongThoseThatGoTogether) {
    if (!TServidorFirebird::Instalado()) GTEST_SKIP() << "no Firebird server installed";
    dm_->SQLConnection1.Aliases().AdicionaAlias({.nome = "LOJA",
                                                 .tipoBanco = "tbInterbase",
                                                 .hostname = TServidorFirebird::DoProcesso().Endereco(),
                                                 .path = (pasta_ / "").string(),
                                                 .database = "loja.fdb",
                                                 .usuario = "SYSDBA",
                                                 .senha = "masterkey",
                                                 .characterSet = "",
                                                 .driver = ""},
                                                false);
    dm_->SQLConnection1.SetAlias("LOJA");
    Atualiza(OpcoesDeTeste(pasta_));
    Executa("alter table SATRIB add constraint RECUSA check (NOME <> 'VALOR')");
    Executa("update SATRIB set SEQUENCIA = SEQUENCIA + 50 where NOME <> 'VALOR'");
    TOpcoes opcoes = OpcoesDeTeste(pasta_);
    opcoes.todas = true;
    int juntas = 0, sozinhas = 0;
    tela_.log.clear();
    Atualiza(opcoes, [&](std::string_view sql) {
        juntas += sql.starts_with("execute block") && sql.find("insert into SATRIB") < sql.size();
        sozinhas += sql.starts_with("insert into SATRIB");
    });
    const auto recusada = [](const auto& entrada) { return entrada.mensagem.starts_with("Coluna "); };
    EXPECT_EQ(std::ranges::count_if(tela_.log, recusada), 1) << "VALOR of TALT";
    EXPECT_EQ(juntas, 3) << "one of each table";
    EXPECT_EQ(sozinhas, 4) << "those of TALT again";
    dm_->SQLConnection1.Open();
    EXPECT_EQ(Linhas(dm_->SQLConnection1,
                     "select SEQUENCIA, ARQUIVO, NOME from SATRIB where ARQUIVO <> 'TREC' order by 2, 1"),
              "0|TALT|CODIGO;1|TALT|NOME;3|TALT|EXTRA;8|TNOVA|CODIGO;9|TNOVA|NOME");
}

/// The statement without its texts.
std::string SemTextos(std::string_view sql) {
    std::string resto;
    for (bool texto = false; const char c : sql) {
        texto = texto != (c == '\'');
        if (!texto) resto += c;
    }
    return resto;
}

TEST_F(AtualizacaoTest, NamesThatAreMoreThanNamesReachNoStatementAndAreToldWithPacketAndRow) {
    std::vector<TColuna> novas(std::begin(kNovas), std::end(kNovas));
    novas.insert(novas.begin() + 1, {"TALT", "Z int,drop NOME --", "ftInteger", 0, 0});
    novas.insert(novas.begin() + 5, {"TREC", "U_Y int,--", "ftInteger", 0, 0});
    for (const TColuna& coluna : std::initializer_list<TColuna>{{"TX (A int) --", "CODIGO", "ftInteger", 0, 1},
                                                                {"TCHV", "A", "ftInteger", 0, 1},
                                                                {"TCHV", "B) --", "ftInteger", 0, 1}})
        novas.push_back(coluna);
    Empacota(pasta_, novas);
    for (const char* sql :
         {"insert into SINDSEC values ('TALT', 'IX on TALT(NOME) --', 0)",
          "insert into SINDSECA values ('TALT', 'IX on TALT(NOME) --', 1, 'NOME')",
          "insert into SINDSEC values ('TALT', 'TALT_2', 1)",
          "insert into SINDSECA values ('TALT', 'TALT_2', 1, 'VALOR')",
          "insert into SINDSECA values ('TALT', 'TALT_2', 2, 'NOME) --')",
          "insert into SATRIB_USER values ('TALT', 8, 'U_Z int,drop NOME --', 'ftInteger', 0, 0, null, null)",
          "insert into SATRIB_USER values ('TREC', 8, 'U_W int,drop NOME --', 'ftInteger', 0, 0, null, null)",
          "insert into SATRIB_USER values ('TUSR (A int) --', 1, 'U_A', 'ftInteger', 0, 0, null, null)"})
        Executa(sql);
    std::string hostis;
    const auto observa = [&](std::string_view sql) {
        if (SemTextos(sql).find("--") != std::string::npos) hostis += std::string(sql) + "\n";
    };
    const auto plano = Plano(observa);
    EXPECT_TRUE(plano && plano->TemAchados());
    tela_.memo2.clear();
    EXPECT_EQ(Atualiza(OpcoesDeTeste(pasta_), observa), TFimDaAtualizacao::Concluida);
    EXPECT_EQ(hostis, "");
    for (const char* linha :
         {"SAtrib.WKD, registro 2, campo NOME", "SAtrib.WKD, registro 6, campo NOME",
          "SARQUIVO.WKD, registro 4, campo NOME_ARQUIVO", "SAtrib.WKD, registro 15, campo NOME",
          "Tabela TALT, índice do dicionário", "Tabela TALT, coluna do dicionário", "Tabela TREC, coluna do dicionário",
          "tabela do dicionário: linha ignorada, o nome 'TUSR (A int) --'"})
        EXPECT_TRUE(TTelaDeTeste::Contem(tela_.memo2, linha)) << linha << "\n" << Junta(tela_.memo2, "\n");
    EXPECT_EQ(Versoes(), "TALT|2;TCHV|2;TNOVA|2;TREC|2");
    dm_->SQLConnection1.Open();
    EXPECT_EQ(Linhas(dm_->SQLConnection1, "select count(NOME), count(VALOR), count(EXTRA) from TALT"), "30|30|0");
    EXPECT_EQ(Linhas(dm_->SQLConnection1, "select count(NOME), count(U_COR) from TREC"), "30|30");
    EXPECT_EQ(Linhas(dm_->SQLConnection1,
                     "select CHAVE from TINI where SESSAO = 'AtualizaTabela' and VALOR = 'SIM' order by CHAVE"),
              "TALT;TCHV;TREC")
        << "the next package may have the same version";
    EXPECT_TRUE(dm_->SQLConnection1.Colunas("TCHV").empty()) << "half a key would be another one";
    EXPECT_EQ(dm_->SQLConnection1.Indices("TALT").size(), 1U) << "half an index would be another one";
}

TEST_F(AtualizacaoTest, AColumnMissingInSarquivoKeepsNoVersionFromBeingRecorded) {
    Empacota(pasta_, kNovas, "Tabela");
    const auto recusa = [](std::string_view sql) {
        if (IgualSemCaixa(sql.substr(0, 20), "alter table SARQUIVO"))
            throw TErroBanco({"recusado", 0, "HY000", "", TFalha::Outra, false});
    };
    EXPECT_EQ(Atualiza(OpcoesDeTeste(pasta_), recusa), TFimDaAtualizacao::Concluida);
    EXPECT_EQ(Versoes(), "TALT|2;TNOVA|2;TREC|2") << Junta(tela_.memo2, "\n");
    EXPECT_FALSE(TTelaDeTeste::Contem(tela_.memo2, "Campo inexistente"));
    EXPECT_EQ(Atualiza(OpcoesDeTeste(pasta_)), TFimDaAtualizacao::Concluida);
    dm_->SQLConnection1.Open();
    EXPECT_EQ(Linhas(dm_->SQLConnection1, "select distinct DESCRICAO_TABELA from SARQUIVO"), "Tabela");
}

}  // namespace
}  // namespace wkd
