#include "corrections/Correcoes.h"

#include "PassesApoio.h"

namespace wkd {
namespace {

constexpr std::string_view kExecutando = "Executando Query: ";
constexpr std::string_view kErro = "Erro rodando a query: ";

class CorrecoesTest : public TPassesTest {
  protected:
    /// Names behind that beginning in the lines of the status list, in order; " | Erro: ..." is taken off.
    std::string Nomes(std::string_view inicio) const {
        std::vector<std::string> nomes;
        for (const auto& linha : tela_.memo1)
            if (linha.starts_with(inicio))
                nomes.push_back(linha.substr(inicio.size(), linha.find(" |") - inicio.size()));
        return Junta(nomes, ";");
    }

    void CriaTabelas() {
        ExecutaTudo({
            "create table TMAQUINA_ANEXOS (COD_EMPRESA varchar(3) not null, COD_MAQUINA varchar(9) not null, CODIGO "
            "smallint not null, constraint PK_TMAQUINA_ANEXOS primary key (COD_EMPRESA, COD_MAQUINA))",
            "create table TORCAMENTO_ITENS (CODIGO integer)",
            "create table TOS_AUX (CODIGO integer)",
            "create table TORCAMENTO (COD_EMPRESA integer, CODIGO integer, N_ORCAMENTO integer)",
            "create table TCOM_AUX (COD_EMPRESA integer, REALCIONA_AUTO integer, COD_PRODUTO integer, AUT_ integer, "
            "QTDE_ESTOQUE double precision, CODIGO_NA_FABRICA varchar(20))",
            "create table TCOM_AUX_OS (COD_EMPRESA integer, COD_COMPRA integer, COD_PRODUTO integer, COD_COM_AUX "
            "integer, QTDE double precision)",
            "create table TCRTLCHQ (COD_EMPRESA integer not null, COD_RELACIONA varchar(8) not null, AUT_ integer not "
            "null, TIPO varchar(1), constraint PK_TCRTLCHQ primary key (COD_EMPRESA, COD_RELACIONA, AUT_))",
            "create index TCRTLCHQ_CODIGO on TCRTLCHQ (COD_EMPRESA, COD_RELACIONA, TIPO)",
            "create index TCRTLCHQ_TIPO on TCRTLCHQ (TIPO)",
            "create table TCHQCANC (COD_EMPRESA integer not null, COD_RELACIONA varchar(8) not null, AUT_ integer not "
            "null, constraint PK_TCHQCANC primary key (COD_EMPRESA, COD_RELACIONA, AUT_))",
            "create table TRETORNO_INSTRU_RASTREIO (QTDE_SAIDA smallint)",
            "create table TRETORNO_FERRA_RASTREIO (QTDE_SAIDA smallint)",
            "create table CSENHA (USAR_PRG_EMAIL_PADRAO integer)",
            "create table TSOL_MAX_OS (COD_EMPRESA integer, COD_OS integer, NUMERO_ORCAMENTO integer, MODULO_ORIGEM "
            "varchar(3))",
            "create table TNATU_OP (TIPO varchar(1), INFORMAR_PLANO_CONTAS_SAI integer)",
            "create table TSAIDA_E (CODIGO integer, COD_FUNC_RETIROU varchar(9), IDENTIFICACAO_FUNCIONARIO varchar(9), "
            "SAIDA_PRODUTO_ACABADO integer, N_OS varchar(9))",
            "create table TCFG_SER (COD_EMPRESA integer, COD_FUNCION_SAIDA_AUTO_PA varchar(9), "
            "IDENT_FUNCION_SAIDA_AUTO varchar(9))",
            "create table TCFG_SAIDA (COD_EMPRESA integer, COD_FUNCION_SAIDA_AUTO varchar(9), IDENT_FUNCION_SAIDA_AUTO "
            "varchar(9))",
            "create table TFUNCION (COD_EMPRESA integer, CODIGO varchar(9), INDENTIFICACAO varchar(9))",
        });
        dm_.AtualizaListaDeTabelas();
    }

    void PreencheTabelas() {
        ExecutaTudo({
            "insert into TMAQUINA_ANEXOS values ('1', 'M', 7)",
            "insert into TCOM_AUX values (1, 10, 100, 1, 0, 'F')",
            "insert into TCOM_AUX values (1, 11, 100, 1, 5, 'F')",
            "insert into TCOM_AUX_OS values (1, 10, 100, 1, 2.5)",
            "insert into TCOM_AUX_OS values (1, 10, 100, 1, 4)",
            "insert into TCRTLCHQ values (1, 'REL', 1, 'A')",
            "insert into TRETORNO_INSTRU_RASTREIO values (3)",
            "insert into TRETORNO_FERRA_RASTREIO values (3)",
            "insert into SLOOKUP (ARQUIVO, CAMPO) values ('tproduto', 'tipo_produto')",
            "insert into SLOOKUP (ARQUIVO, CAMPO) values ('tproduto', 'outro')",
            "insert into CSENHA values (4)",
            "insert into CSENHA values (2)",
            "insert into TNATU_OP values ('S', null)",
            "insert into TNATU_OP values ('E', null)",
            "insert into TCFG_SER values (1, 'F9', null)",
            "insert into TSAIDA_E values (1, null, 'I1', 0, '')",
            "insert into TSAIDA_E values (2, 'F2', 'I2', 0, 'OS')",
            "insert into TSAIDA_E values (3, '', 'I3', 1, null)",
        });
        for (const std::string linha :
             {"'TMAQUINA_ANEXOS', 3, 'CODIGO', 'ftInteger', 0, 0", "'tproduto', 1, 'tipo_produto', 'ftString', 9, 0",
              "'TORCAMENTO', 1, 'FORMA DE PAGAMENTO', 'ftString', 40, 0",
              "'TORCAMENTO_ITENS', 1, 'TIPO DE HORA', 'ftString', 40, 0",
              "'TOS_AUX', 1, 'TIPO DE HORA', 'ftString', 40, 0", "'CADCLI', 1, 'A', 'ftString', 9, 0",
              "'TCRTLCHQ', 1, 'COD_EMPRESA', 'ftInteger', 0, 1", "'TCRTLCHQ', 2, 'COD_RELACIONA', 'ftString', 8, 1",
              "'TCRTLCHQ', 3, 'AUT_', 'ftInteger', 0, 1", "'TORD_PROX', 1, 'B', 'ftString', 9, 0"})
            Executa("insert into SATRIB (ARQUIVO, SEQUENCIA, NOME, TIPO, TAMANHO, CHAVE_DE_PESQUISA) values (" + linha +
                    ")");
        for (const std::string aposentada : {"TTMP_PLAN_REC", "TR87_FILTRO_AUX", "RX1_TMP", "TPREV_HS", "TTP_VEND",
                                             "TENT_PAX", "TETIQ_NF", "TORD_PRO", "TPRO_AUX"})
            Executa("insert into SATRIB (ARQUIVO, NOME) values ('" + aposentada + "', 'A')");
    }
};

TEST_F(CorrecoesTest, TheWholeListRunsOnceOnADatabaseWithItsTables) {
    CriaTabelas();
    PreencheTabelas();
    QuerysAnteriores(ctx_);
    QuerysPosteriores(ctx_);

    EXPECT_EQ(Nomes(kErro),
              "Antes_up401G_4.1;CodigoFabrica;AjustaCodReceber;Up401C_1;Up401I_4;Up401I_5;Up401I_6;Up401I_7;Up401I_8;"
              "Up401I_9");
    EXPECT_TRUE(tela_.memo2.empty() && tela_.log.empty()) << "failing corrections are no errors of the run";
    EXPECT_EQ(Junta(ListaDeLinhas("select CHAVE from TINI where SESSAO = 'AtualizaQuery' and VALOR = 'SIM'"), ";"),
              Nomes(kExecutando));
    EXPECT_EQ(Linhas("select count(*) from TINI"), "40");

    EXPECT_EQ(dm_.SQLConnection1.ChavePrimaria("TMAQUINA_ANEXOS").colunas.size(), 3U);
    EXPECT_EQ(
        Linhas("select ARQUIVO, NOME, CHAVE_DE_PESQUISA from SATRIB where ARQUIVO not starting 'TCRT' order by 1"),
        "TMAQUINA_ANEXOS|CODIGO|1;TORCAMENTO|FORMA_DE_PAGAMENTO|0;TORCAMENTO_ITENS|TIPO_DE_HORA|0;TORD_PROX|B|0;"
        "TOS_AUX|TIPO_DE_HORA|0");
    EXPECT_EQ(Linhas("select CAMPO from SLOOKUP"), "outro");
    EXPECT_EQ(Linhas("select QTDE_ESTOQUE from TCOM_AUX order by REALCIONA_AUTO"), "6.5;5");
    for (const std::string tabela : {"TRETORNO_INSTRU_RASTREIO", "TRETORNO_FERRA_RASTREIO"})
        EXPECT_EQ(Linhas("select QTDE_SAIDA / 2 from " + tabela), "1.5");
    EXPECT_EQ(Linhas("select USAR_PRG_EMAIL_PADRAO from CSENHA order by 1"), "1;2");
    EXPECT_EQ(Linhas("select TIPO, INFORMAR_PLANO_CONTAS_SAI from TNATU_OP order by 1"), "E|<null>;S|1");
    EXPECT_EQ(Linhas("select CODIGO, COD_FUNC_RETIROU, IDENTIFICACAO_FUNCIONARIO from TSAIDA_E order by 1"),
              "1|F9|F9;2|F2|F2;3|F9|I3");
    EXPECT_TRUE(dm_.VerificaExisteCampo("TOS_AUX", "TIPO_DE_HORA"));
    EXPECT_TRUE(dm_.VerificaExisteCampo("TORCAMENTO_ITENS", "TIPO_DE_HORA"));
    EXPECT_TRUE(dm_.VerificaExisteCampo("TORCAMENTO", "FORMA_DE_PAGAMENTO"));

    tela_.memo1.clear();
    const std::string depois = Retrato();
    QuerysPosteriores(ctx_);
    EXPECT_TRUE(tela_.memo1.empty());
    EXPECT_EQ(Retrato(), depois);

    Executa("delete from TINI where CHAVE = 'Up401A_1'");
    QuerysPosteriores(ctx_);
    EXPECT_EQ(tela_.memo1, std::vector<std::string>{"Executando Query: Up401A_1"});
}

TEST_F(CorrecoesTest, AnAdjustmentThatEndsEarlyLeavesKeyAndIndexesInPlace) {
    CriaTabelas();
    PreencheTabelas();
    const auto indices = [this] {
        std::vector<std::string> nomes;
        for (const auto& indice : dm_.SQLConnection1.Indices("TCRTLCHQ")) nomes.push_back(indice.nome);
        std::ranges::sort(nomes);
        return Junta(nomes, ";");
    };
    QuerysPosteriores(ctx_);
    EXPECT_EQ(Executados("drop   index TCRTLCHQ_CODIGO;"), 1);
    EXPECT_EQ(Linhas("select * from TCRTLCHQ"), "1|REL|1|A");
    EXPECT_EQ(dm_.SQLConnection1.Colunas("TCRTLCHQ")[1].tamanho, 11);
    EXPECT_EQ(dm_.SQLConnection1.ChavePrimaria("TCRTLCHQ").nome, "PK_TCRTLCHQ");
    EXPECT_EQ(dm_.SQLConnection1.ChavePrimaria("TCHQCANC").nome, "PK_TCHQCANC");
    EXPECT_EQ(indices(), "TCRTLCHQ_CODIGO;TCRTLCHQ_TIPO");

    // as a run that was killed behind the first statement leaves it
    ExecutaTudo({"delete from TINI where CHAVE = 'AjustaCodReceber'", "drop index TCRTLCHQ_CODIGO"});
    QuerysPosteriores(ctx_);
    EXPECT_EQ(indices(), "TCRTLCHQ_CODIGO;TCRTLCHQ_TIPO");

    ExecutaTudo({"delete from TINI where CHAVE = 'AjustaCodReceber'", "delete from SATRIB where ARQUIVO = 'TCRTLCHQ'"});
    QuerysPosteriores(ctx_);
    EXPECT_EQ(Junta(dm_.SQLConnection1.ChavePrimaria("TCRTLCHQ").colunas, ","), "COD_EMPRESA,COD_RELACIONA,AUT_");
    EXPECT_TRUE(tela_.memo2.empty()) << "no dictionary tells of the key";

    ExecutaTudo({"delete from TINI where CHAVE = 'AjustaCodReceber'",
                 "insert into SATRIB (ARQUIVO, SEQUENCIA, NOME, TIPO, CHAVE_DE_PESQUISA) values ('TCRTLCHQ', 1, 'SEM',"
                 " 'ftInteger', 1)"});
    QuerysPosteriores(ctx_);
    EXPECT_EQ(Junta(dm_.SQLConnection1.ChavePrimaria("TCRTLCHQ").colunas, ","), "COD_EMPRESA,COD_RELACIONA,AUT_");
    EXPECT_TRUE(TTelaDeTeste::Contem(tela_.memo2, "não pôde ser feita como pede o pacote e voltou como era"));
    EXPECT_EQ(Linhas("select count(*) from TINI where SESSAO = 'VoltaComoEra'"), "0");
}

TEST_F(CorrecoesTest, WithoutTheirTablesEveryCorrectionFailsButTheDictionaryOnesAndAllAreRecorded) {
    QuerysAnteriores(ctx_);
    QuerysPosteriores(ctx_);
    EXPECT_EQ(Linhas("select count(*) from TINI where VALOR = 'SIM'"), "40");
    EXPECT_EQ(Divide(Nomes(kErro), ';').size(), 24U);
    EXPECT_TRUE(tela_.memo2.empty());
}

TEST_F(CorrecoesTest, TheCheckBoxesAndTheGenerationDecideWhichSetsRun) {
    opcoes_.querysAnteriores = false;
    QuerysAnteriores(ctx_);
    opcoes_.querysAnteriores = true;
    opcoes_.querysPosteriores = false;
    estado_.usuariosOnline = false;
    QuerysPosteriores(ctx_);
    EXPECT_EQ(Linhas("select count(*) from TINI"), "0");

    opcoes_.querysPosteriores = true;
    QuerysPosteriores(ctx_);
    EXPECT_TRUE(Nomes(kExecutando).starts_with("Antes_up401G_1;"));
}

TEST_F(CorrecoesTest, SqlServerGetsItsOwnTexts) {
    Fala("tbSQLServer");
    QuerysAnteriores(ctx_);
    EXPECT_EQ(Nomes(kExecutando), "Antes_up401G_1;Antes_up401G_2;Antes_up401G_3;Antes_up401G_4");
    QuerysPosteriores(ctx_);
    for (const char* inicio : {"ALTER TABLE tmaquina_anexos ALTER COLUMN CODIGO integer NOT NULL;",
                               "ALTER TABLE TOS_AUX ADD TIPO_DE_HORA nvar", "drop   index TCRTLCHQ_CODIGO on TCRTLCHQ",
                               "UPDATE TSAIDA_E SET COD_FUNC_RETIROU = ( SELECT TOP 1 "})
        EXPECT_EQ(Executados(inicio), 1) << inicio;
    EXPECT_EQ(Linhas("select count(*) from TINI"), "39");
}

TEST_F(CorrecoesTest, WithoutTheSettingsTableASetEndsWithOneError) {
    Executa("drop table TINI");
    EXPECT_THROW(QuerysAnteriores(ctx_), TErroBanco);
    EXPECT_THROW(QuerysPosteriores(ctx_), TErroBanco);
    EXPECT_TRUE(tela_.memo1.empty());
}

}  // namespace
}  // namespace wkd
