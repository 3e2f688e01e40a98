#include "rebuild/Nova.h"

#include <limits>

#include "NovaApoio.h"

namespace wkd {
namespace {

const TAtributos kVelhos = {{"CODIGO", "ftInteger", 0, 1}, {"NOME", "ftString", 20}, {"VALOR", "ftInteger"}};
const TAtributos kNovos = {
    {"CODIGO", "ftInteger", 0, 1}, {"NOME", "ftString", 30}, {"VALOR", "ftFloat"}, {"TIPO", "ftString", 1, 0, "n"}};

/// A table TCLI of the stored dictionary with key, secondary index and `linhas` rows; the package widens it.
struct TCliente : TBancoDaNova {
    explicit TCliente(int linhas = 5, const TAtributos& novos = kNovos) {
        Guardada("TCLI", kVelhos);
        Executa("insert into SINDSEC values ('TCLI', 'ICLI_NOME', 0)");
        Executa("insert into SINDSECA values ('TCLI', 'ICLI_NOME', 'NOME', 1)");
        Executa(
            "create table TCLI (CODIGO integer not null, NOME varchar(20), VALOR integer,"
            " constraint PK_TCLI primary key (CODIGO))");
        std::vector<std::string> comandos;
        for (int i = 1; i <= linhas; ++i)
            comandos.push_back("insert into TCLI values (" + std::to_string(i) + ", 'José " + std::to_string(i) +
                               "', " + std::to_string(i * 10) + ")");
        ExecutaTudo(comandos);
        Pacote("TCLI", novos);
    }
    std::string Clientes() { return Le("select CODIGO, NOME, VALOR from TCLI order by CODIGO"); }
};

TEST(NovaTest, TheTableIsRebuiltWithRowsKeyIndexesDictionaryAndVersion) {
    TCliente banco;
    EscreveArquivo(banco.Pasta() / "TCLI.ok", "velho");
    EscreveArquivo(banco.Pasta() / "TCLI.atu", "novo");
    banco.Reconstroi();
    EXPECT_EQ(banco.Retrato("TCLI"),
              "CODIGO integer! , NOME varchar(30) , VALOR double precision , TIPO varchar(1) 'N', \n"
              "PK_TCLI CODIGO\nICLI_NOME NOME\n"
              "1|José 1|10|N;2|José 2|20|N;3|José 3|30|N;4|José 4|40|N;5|José 5|50|N\n"
              "1|TCLI|2\n"
              "CODIGO|ftInteger|0|1;NOME|ftString|30|0;VALOR|ftFloat|0|0;TIPO|ftString|1|0\n\n");
    EXPECT_EQ(banco.Le("select count(*) from BTCLI"), "5");
    EXPECT_TRUE(banco.tela_.memo2.empty()) << Junta(banco.tela_.memo2, "\n");
    EXPECT_TRUE(banco.tela_.infos.empty()) << Junta(banco.tela_.infos, "\n");
    EXPECT_EQ(LeArquivo(banco.Pasta() / "TCLI.ok"), "novo");
    EXPECT_EQ(LeArquivo(banco.Pasta() / "TCLI.old"), "velho");
    EXPECT_EQ(banco.tela_.atuais.back(), "Parado.");
}

class NovaConjuntosTest : public ::testing::TestWithParam<const char*> {};

TEST_P(NovaConjuntosTest, EveryValueSurvives) {
    TBancoDaNova banco(GetParam());
    banco.Guardada("TVAL", {{"CODIGO", "ftInteger", 0, 1},
                            {"TEXTO", "ftString", 40},
                            {"FRACAO", "ftFloat"},
                            {"QUANDO", "ftDateTime"},
                            {"DIA", "ftDate"},
                            {"HORA", "ftTime"},
                            {"FOTO", "ftBlob"}});
    banco.Executa(
        "create table TVAL (CODIGO integer not null primary key, TEXTO varchar(60), FRACAO double precision, QUANDO"
        " timestamp, DIA date, HORA time, FOTO blob sub_type 0, GRANDE bigint, FIXO numeric(18,4), CURTO smallint,"
        " LETRAS char(5), CRUS varchar(4) character set octets, NOTA blob sub_type 1)");
    auto insere =
        banco.Conexao().Prepara("insert into TVAL values (:a, :b, :c, :d, :e, :f, :g, :h, :i, :j, :k, :l, :m)");
    std::string foto;
    for (int i = 0; i < 300'000; ++i) foto += static_cast<char>(i * 7 % 256);
    const TDataHora agora{DataDe(2024, 2, 29), {123456789 * 1000LL}};
    const std::vector<TLinha> linhas = {
        {1, "ação É ñ", 0.1, agora, DataDe(1899, 12, 30), THora{5'000'000}, TBytes{foto}, INT64_MAX,
         TDecimal{-12345, 4}, -32768, "ab", TBytes{std::string("\0\xff", 2)}, "nota com acento ç"},
        {2, "brancos no fim  ", 1e-300, TValor(), TValor(), TValor(), TBytes{""}, INT64_MIN, TDecimal{1, 4}, 32767, "",
         TValor(), TValor()},
        {3, "", -1.7976931348623157e308, TDataHora{DataDe(1, 1, 1), {}}, DataDe(9999, 12, 31), THora{},
         TBytes{foto.substr(0, 65535)}, TValor(), TValor(), TValor(), TValor(), TBytes{""}, ""},
        {4, std::string(60, 'x'), 4.9406564584124654e-324, TValor(), TValor(), TValor(), TBytes{foto.substr(0, 65536)},
         9007199254740993, TValor(), TValor(), TValor(), TValor(), TValor()},
        {5, TValor(), TValor(), TValor(), TValor(), TValor(), TValor(), TValor(), TValor(), TValor(), TValor(),
         TValor(), TValor()}};
    for (const auto& linha : linhas) {
        for (std::size_t i = 0; i < linha.size(); ++i) insere->Atribui(i, linha[i]);
        insere->Executa();
    }
    insere.reset();
    const auto todas = [&](const std::string& tabela) {
        std::vector<TLinha> lidas;
        const auto cursor = banco.Conexao().Prepara(
            "select CODIGO, TEXTO, FRACAO, QUANDO, DIA, HORA, FOTO, GRANDE, FIXO, CURTO, LETRAS, CRUS, NOTA from " +
            tabela + " order by CODIGO");
        for (cursor->Abre(); cursor->Proximo();) {
            lidas.emplace_back();
            for (std::size_t i = 0; i < 13; ++i) {
                const TValor valor = cursor->Valor(i);
                const bool longo = valor.Se<std::shared_ptr<const TConteudo>>() != nullptr;
                lidas.back().push_back(longo ? TValor(TBytes{valor.ComoBytes()}) : valor);
            }
        }
        return lidas;
    };
    const auto antes = todas("TVAL");
    banco.Pacote("TVAL", {{"CODIGO", "ftInteger", 0, 1},
                          {"TEXTO", "ftString", 80},
                          {"FRACAO", "ftFloat"},
                          {"QUANDO", "ftDateTime"},
                          {"DIA", "ftDate"},
                          {"HORA", "ftTime"},
                          {"FOTO", "ftBlob"},
                          {"GRANDE", "ftString", 30},
                          {"FIXO", "ftFloat"},
                          {"NOVA", "ftInteger"}});
    banco.Reconstroi();

    const auto guardadas = todas("BTVAL");
    ASSERT_EQ(guardadas.size(), linhas.size());
    for (std::size_t i = 0; i < linhas.size(); ++i)
        for (std::size_t c = 0; c < linhas[i].size(); ++c)
            EXPECT_TRUE(guardadas[i][c] == antes[i][c]) << i << " " << c << ": " << guardadas[i][c].ComoTexto();
    for (const auto& [coluna, esperado] : std::map<std::string, std::string>{
             {"TEXTO", "ação É ñ;brancos no fim  ;;" + std::string(60, 'x') + ";<null>"},
             {"GRANDE", "9223372036854775807;-9223372036854775808;<null>;9007199254740993;<null>"},
             {"FIXO", "-1.2345;1e-04;<null>;<null>;<null>"},
             {"FRACAO", "0.1;1e-300;-1.7976931348623157e+308;5e-324;<null>"}})
        EXPECT_EQ(banco.Le("select " + coluna + " from TVAL order by CODIGO"), esperado);
    EXPECT_EQ(banco.Le("select count(*) from TVAL t join BTVAL b on b.CODIGO = t.CODIGO and b.FOTO is not distinct from"
                       " t.FOTO and b.QUANDO is not distinct from t.QUANDO and b.DIA is not distinct from t.DIA and"
                       " b.HORA is not distinct from t.HORA"),
              "5");
    EXPECT_EQ(banco.tela_.memo2, std::vector<std::string>{"Tabela TVAL: colunas que ficaram só em BTVAL: CURTO, "
                                                          "LETRAS, CRUS, NOTA"});
    EXPECT_TRUE(banco.tela_.infos.empty()) << Junta(banco.tela_.infos, "\n");
}

INSTANTIATE_TEST_SUITE_P(Conjuntos, NovaConjuntosTest, ::testing::Values("NONE", "WIN1252", "ISO8859_1", "UTF8"));

TEST(NovaTest, NoRowIsLostWhateverTheKey) {
    struct TCaso {
        const char *tabela, *linhas, *depois, *avisos;
        int chave;
    };
    const TCaso casos[] = {
        {"CODIGO integer, NOME varchar(20)", "1,'a';1,'b';2,'c'", "1|a;2|c", "Nº de registros antes: 3", 1},
        {"CODIGO integer, NOME varchar(20)", "null,'a';2,'c'", "0|a;2|c", "", 1},
        {"CODIGO integer, NOME varchar(20)", "1,'a';1,'a';null,'b'", "1|a;1|a;<null>|b", "", 0},
        {"CODIGO integer, NOME varchar(20), A_MAO integer", "1,'a',7;2,null,8", "1|a;2|<null>", "A_MAO", 1},
    };
    for (const TCaso& caso : casos) {
        SCOPED_TRACE(caso.linhas);
        TBancoDaNova banco;
        const TAtributos colunas = {{"CODIGO", "ftInteger", 0, caso.chave}, {"NOME", "ftString", 20}};
        banco.Guardada("TCLI", colunas);
        banco.Executa("create table TCLI (" + std::string(caso.tabela) + ")");
        for (const auto& linha : Divide(caso.linhas, ';')) banco.Executa("insert into TCLI values (" + linha + ")");
        banco.Pacote("TCLI", colunas);
        banco.Reconstroi();
        EXPECT_EQ(banco.Le("select CODIGO, NOME from TCLI"), caso.depois);
        EXPECT_EQ(banco.Le("select count(*) from BTCLI"), std::to_string(Divide(caso.linhas, ';').size()));
        const std::string memo2 = Junta(banco.tela_.memo2, "\n");
        if (*caso.avisos) {
            EXPECT_NE(memo2.find(caso.avisos), std::string::npos) << memo2;
        } else {
            EXPECT_EQ(memo2, "");
        }
        EXPECT_FALSE(banco.estado_.falhouApagar);
    }
}

TEST(NovaTest, RequiredColumnsAndAutoIncrementsGetTheirValues) {
    TBancoDaNova banco;
    banco.Guardada("TPED", {{"CODIGO", "ftInteger", 0, 1}, {"DTPEDIDO", "ftDateTime", 0, 1}, {"NOME"}});
    banco.Executa("create table TPED (CODIGO integer, DTPEDIDO timestamp, NOME varchar(150))");
    for (const char* linha : {"0, null, 'a'", "0, null, 'b'", "7, null, 'c'", "null, null, 'd'"})
        banco.Executa("insert into TPED values (" + std::string(linha) + ")");
    banco.Pacote("TPED", {{"CODIGO", "ftInteger", 0, 1, "", 0, 1},
                          {"DTPEDIDO", "ftDateTime", 0, 1},
                          {"NOME"},
                          {"LOJA", "ftInteger", 0, 1, "5"},
                          {"SERIE", "ftString", 3, 1}});
    banco.Reconstroi();
    EXPECT_EQ(banco.Le("select CODIGO, NOME, LOJA, SERIE from TPED"), "1|a|5|0;2|b|5|0;7|c|5|0;3|d|5|0");
    EXPECT_EQ(banco.Le("select count(*) from TPED where DTPEDIDO > dateadd(-1 hour to current_timestamp)"), "4");
    EXPECT_TRUE(banco.tela_.memo2.empty()) << Junta(banco.tela_.memo2, "\n");
}

TEST(NovaTest, TablesColumnsIndexesAndDefaultsMayHoldTheWordCommit) {
    TBancoDaNova banco;
    banco.Guardada("TCOMMIT", kVelhos);
    banco.ExecutaTudo({"create table TCOMMIT (CODIGO integer not null, NOME varchar(20), VALOR integer)",
                       "insert into SINDSEC values ('TCOMMIT', 'ICOMMIT', 0)",
                       "insert into SINDSECA values ('TCOMMIT', 'ICOMMIT', 'DT_COMMIT', 1)"});
    banco.ExecutaTudo({"insert into TCOMMIT values (1, 'a', 10)", "grant select on TCOMMIT to MARIA"});
    banco.Pacote("TCOMMIT", {{"CODIGO", "ftInteger", 0, 1}, {"NOME"}, {"DT_COMMIT", "ftString", 9, 0, "commit"}});
    banco.Reconstroi();
    EXPECT_EQ(banco.Le("select CODIGO, NOME, DT_COMMIT from TCOMMIT"), "1|a|COMMIT");
    EXPECT_EQ(banco.Conexao().ChavePrimaria("TCOMMIT").nome, "PK_TCOMMIT");
    EXPECT_EQ(banco.Conexao().Indices("TCOMMIT").size(), 1U);
    EXPECT_EQ(banco.Le("select count(*) from rdb$user_privileges where rdb$user = 'MARIA'"), "1");
    EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2");
}

TEST(NovaTest, WhatDoesNotFitIsRejectedAloneAndKept) {
    TBancoDaNova banco;
    banco.Guardada("TCLI", {{"CODIGO", "ftString", 5, 1}, {"IDADE", "ftString", 10}, {"NOME", "ftString", 20}});
    banco.Executa("create table TCLI (CODIGO varchar(5) not null primary key, IDADE varchar(10), NOME varchar(20))");
    for (const char* linha : {"'01', '30', 'longo demais'", "'1', '31', 'b'", "'2', 'moço', 'c'", "'3', '', 'd'"})
        banco.Executa("insert into TCLI values (" + std::string(linha) + ")");
    banco.Pacote("TCLI", {{"CODIGO", "ftInteger", 0, 1}, {"IDADE", "ftInteger"}, {"NOME", "ftString", 5}});
    banco.Reconstroi();
    EXPECT_EQ(banco.Le("select * from TCLI order by CODIGO"), "1|30|<null>;2|<null>|c;3|<null>|d");
    const std::string rejeitados = banco.Rejeitados();
    EXPECT_NE(rejeitados.find("\"campo\": \"NOME\", \"valor\": \"longo demais\"}"), std::string::npos) << rejeitados;
    EXPECT_NE(rejeitados.find("\"chave\": {\"CODIGO\": \"2\"}"), std::string::npos);
    EXPECT_NE(rejeitados.find("\"valor\": \"moço\""), std::string::npos);
    EXPECT_NE(rejeitados.find("\"valores\": {\"CODIGO\": \"1\", \"IDADE\": \"31\", \"NOME\": \"b\"}"),
              std::string::npos);
    EXPECT_EQ(std::ranges::count(rejeitados, '\n'), 3);
    EXPECT_EQ(banco.tela_.infos.size(), 1U);
    EXPECT_TRUE(banco.tela_.infos.front().starts_with("Erro ao Voltar backup: "));
    EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "Nº de registros antes: 4 Nº de registros depois: 3"))
        << Junta(banco.tela_.memo2, "\n");
    EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2");
}

TEST(NovaTest, ATextThatTheDictionaryCannotHoldCostsNoColumn) {
    for (const char* conjunto : {"NONE", "UTF8"}) {
        SCOPED_TRACE(conjunto);
        TBancoDaNova banco(conjunto);
        banco.Guardada("TCLI", kVelhos);
        banco.Executa("create table TCLI (CODIGO integer not null primary key, NOME varchar(20), VALOR integer)");
        banco.Executa("insert into TCLI values (1, 'a', 10)");
        TAtributos novos = kNovos;
        novos[1].titulo = "Nome → razão";
        novos[2].titulo = std::string(41, 'v');
        banco.Pacote("TCLI", novos);
        banco.Reconstroi();
        EXPECT_EQ(banco.Le("select CODIGO, NOME, VALOR, TIPO from TCLI"), "1|a|10|N");
        EXPECT_EQ(banco.Le("select NOME, DISCRIMINACAO from SATRIB order by SEQUENCIA"),
                  "CODIGO|;NOME|" + std::string(conjunto == std::string("UTF8") ? "Nome → razão" : "<null>") +
                      ";VALOR|<null>;TIPO|");
        EXPECT_TRUE(banco.tela_.LogContem("DISCRIMINACAO"));
        EXPECT_EQ(banco.tela_.LogContem("→"), conjunto == std::string("NONE"));
        EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2");
    }
}

TEST(NovaTest, ABackupThatLacksARowEndsTheRebuildBeforeTheDrop) {
    TCliente banco;
    bool apagou = false;
    banco.Conexao().Observa([&](std::string_view sql) {
        if (apagou || sql != "select count(*) as total from BTCLI") return;
        apagou = true;
        banco.banco_.Outra()->ExecuteDirect("delete from BTCLI where CODIGO = 3");
    });
    banco.Reconstroi();
    banco.Conexao().Observa({});
    EXPECT_TRUE(apagou);
    EXPECT_TRUE(banco.estado_.falhouApagar) << Junta(banco.tela_.memo2, "\n");
    EXPECT_EQ(banco.Le("select count(*) from TCLI"), "5");
    EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "não confere: 5 registros, 4 copiados"));
}

/// NaN equals nothing on the server, nor itself; the rows come back all the same, and are known to be.
TEST(NovaTest, WhatIsNoNumberComesBackAsItIs) {
    const struct {
        const char *nome, *criacao;
        TAtributos novos;
    } casos[] = {
        {"with key", "V double precision, X integer, primary key (ID)", {{"ID", "ftInteger", 0, 1}, {"V", "ftFloat"}}},
        {"without key", "V double precision, X integer", {{"ID", "ftInteger"}, {"V", "ftFloat"}}},
        {"of half the width", "V float, X integer, primary key (ID)", {{"ID", "ftInteger", 0, 1}, {"V", "ftFloat"}}},
        {"of half the width, without key", "V float, X integer", {{"ID", "ftInteger"}, {"V", "ftFloat"}}},
        {"in the key",
         "V double precision not null, X integer, primary key (ID, V)",
         {{"ID", "ftInteger", 0, 1}, {"V", "ftFloat", 0, 1}}},
    };
    for (const auto& caso : casos) {
        for (const char* tipo : {"ftInteger", "ftFloat"}) {  // of X: rows that the server moves, or the client
            SCOPED_TRACE(std::string(caso.nome) + " " + tipo);
            TBancoDaNova banco;
            TAtributos novos = caso.novos;
            novos.push_back({"X", "ftInteger"});
            banco.Guardada("TNAN", novos);
            novos.back().tipo = tipo;
            banco.Executa("create table TNAN (ID integer not null, " + std::string(caso.criacao) + ")");
            auto insere = banco.Conexao().Prepara("insert into TNAN values (:a, :b, 1)");
            const double infinito = std::numeric_limits<double>::infinity();
            const TLinha valores = {std::numeric_limits<double>::quiet_NaN(), infinito, -infinito, 1.5, -0.0};
            for (std::size_t i = 0; i < valores.size(); ++i) {
                insere->Atribui("a", static_cast<std::int64_t>(i));
                insere->Atribui("b", valores[i]);
                insere->Executa();
            }
            insere.reset();
            banco.Pacote("TNAN", novos);
            banco.Reconstroi();
            EXPECT_EQ(banco.Le("select ID, V from TNAN order by 1"), "0|nan;1|inf;2|-inf;3|1.5;4|-0");
            EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2");
            EXPECT_TRUE(banco.tela_.memo2.empty()) << Junta(banco.tela_.memo2, "\n");
        }
    }
}

/// Of 65,536 bytes and more in UTF8.
TAtributos MuitosTextos() {
    TAtributos colunas = {{"CODIGO", "ftInteger", 0, 1}};
    for (int i = 0; i < 66; ++i) colunas.push_back({"C" + std::to_string(i), "ftString", 250});
    return colunas;
}

TEST(NovaTest, AnUnfitPackageOrDictionaryLeavesTheTableAsItWas) {
    struct TCaso {
        const char* nome;
        TAtributos novos;
        const char *preparo, *motivo;
    };
    const TCaso casos[] = {
        {"no columns", {}, "", "não tem colunas"},
        {"unknown type", {{"CODIGO", "ftInteger", 0, 1}, {"X", "ftCoisa"}}, "", "ftCoisa"},
        {"name twice", {{"CODIGO", "ftInteger", 0, 1}, {"codigo", "ftInteger"}}, "", "codigo"},
        {"reserved word", {{"CODIGO", "ftInteger", 0, 1}, {"ORDER", "ftInteger"}}, "", "ORDER"},
        {"name too long", {{"CODIGO", "ftInteger", 0, 1}, {"NOME_DE_MAIS_DE_VINTE_E_CINCO"}}, "", "SATRIB"},
        {"too large a row", MuitosTextos(), "", "65535"},
        {"backup is a table", kNovos, "insert into SARQUIVO values ('1', 'BTCLI', 1)", "BTCLI"},
        {"view", kNovos, "create view VCLI as select NOME from TCLI", "visão VCLI"},
        {"foreign key", kNovos, "create table TFILHO (CLI integer references TCLI)", "TFILHO"},
    };
    for (const TCaso& caso : casos) {
        SCOPED_TRACE(caso.nome);
        TCliente banco(5, caso.novos);
        if (*caso.preparo) banco.Executa(caso.preparo);
        const std::string antes = banco.Clientes();
        banco.Reconstroi();
        EXPECT_TRUE(banco.estado_.falhouApagar);
        EXPECT_EQ(banco.Clientes(), antes);
        EXPECT_EQ(banco.Conexao().Indices("TCLI").size(), 1U);
        EXPECT_NE(banco.Le("select VERSAO from SARQUIVO where NOME_ARQUIVO = 'TCLI'"), "2");
        ASSERT_FALSE(banco.tela_.memo2.empty());
        EXPECT_NE(banco.tela_.memo2.front().find("TCLI"), std::string::npos);
        EXPECT_NE(banco.tela_.memo2.front().find(caso.motivo), std::string::npos) << banco.tela_.memo2.front();
        EXPECT_FALSE(banco.tela_.log.empty());
    }
}

TEST(NovaTest, ATableThatAnotherConnectionWritesIsReportedAndKept) {
    TCliente banco;
    banco.Executa("create index ICLI_NOME on TCLI (NOME)");
    const auto outra = banco.banco_.Outra();
    outra->StartTransaction();
    outra->Prepara("update TCLI set VALOR = 99 where CODIGO = 1")->Executa();
    banco.Reconstroi();
    EXPECT_TRUE(banco.estado_.falhouApagar);
    EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "TCLI"));
    outra->Commit();
    banco.Reconstroi();
    EXPECT_FALSE(banco.estado_.falhouApagar);
    EXPECT_EQ(banco.Le("select VALOR from TCLI where CODIGO = 1"), "99");
}

/// The names of table, stored rows and package may differ in letter case.
TEST(NovaTest, TheTableIsRebuiltHoweverItsNameIsWritten) {
    const char* casos[][2] = {{"Tcli", "Tcli"}, {"TCLI", "Tcli"}, {"Tcli", "TCLI"}};
    for (const auto& [guardada, pacote] : casos) {
        SCOPED_TRACE(std::string(guardada) + " " + pacote);
        TBancoDaNova banco;
        banco.Guardada(guardada, kVelhos);
        banco.Executa("alter table SATRIB add COD_PLUGIN varchar(5)");
        banco.Executa("alter table SATRIB_USER add COD_PLUGIN varchar(5)");
        banco.Executa("insert into SATRIB_USER (ARQUIVO, NOME, TIPO, TAMANHO, SEQUENCIA) values ('" +
                      std::string(guardada) + "', 'U_COR', 'ftString', 5, 9)");
        banco.Executa("insert into SINDSEC values ('" + std::string(guardada) + "', 'ICLI_NOME', 0)");
        banco.Executa("insert into SINDSECA values ('" + std::string(guardada) + "', 'ICLI_NOME', 'NOME', 1)");
        banco.Executa(
            "create table TCLI (CODIGO integer not null primary key, NOME varchar(20), VALOR integer, U_COR"
            " varchar(5))");
        banco.Executa("create index ICLI_NOME on TCLI (NOME)");
        banco.Executa("insert into TCLI values (1, 'José', 10, 'azul')");
        banco.Pacote(pacote, kNovos);
        banco.Reconstroi();
        EXPECT_EQ(banco.Le("select * from TCLI"), "1|José|10|N|azul");
        EXPECT_EQ(banco.Le("select ARQUIVO, NOME, TAMANHO from SATRIB order by SEQUENCIA"),
                  Troca("#|CODIGO|0;#|NOME|30;#|VALOR|0;#|TIPO|1;#|U_COR|5", "#", pacote));
        EXPECT_EQ(banco.Conexao().Indices("TCLI").size(), 1U);
        EXPECT_EQ(banco.Le("select NOME_ARQUIVO, VERSAO from SARQUIVO"), std::string(pacote) + "|2");
        EXPECT_TRUE(banco.tela_.memo2.empty()) << Junta(banco.tela_.memo2, "\n");
    }
}

TEST(NovaTest, TheTablesThatARebuildLivesOnAreNotRebuilt) {
    for (const std::string tabela : {"SATRIB", "SARQUIVO", "TINI"}) {
        SCOPED_TRACE(tabela);
        TBancoDaNova banco;
        banco.Guardada(tabela, {{"NOME", "ftString", 20}});
        banco.Pacote(tabela, {{"NOME", "ftString", 30}});
        banco.Reconstroi();
        EXPECT_TRUE(banco.estado_.falhouApagar);
        EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "usa a tabela " + tabela));
        EXPECT_TRUE(banco.Conexao().ExisteTabela(tabela));
        EXPECT_FALSE(banco.Conexao().ExisteTabela("B" + tabela));
    }
}

TEST(NovaTest, OnlyWhatRefusesRowsStandsOnTheTableWhileTheyComeBack) {
    TCliente banco;
    banco.ExecutaTudo({"insert into SINDSEC values ('TCLI', 'ICLI_UNICO', 1)",
                       "insert into SINDSECA values ('TCLI', 'ICLI_UNICO', 'VALOR', 1)"});
    for (const char* comando :
         {"create index ICLI_NOME on TCLI (NOME)", "create descending index MEU_INDICE on TCLI (VALOR)",
          "alter table TCLI add constraint UNICO unique (NOME, CODIGO)",
          "alter table TCLI add constraint CERTO check (VALOR > 0)", "create table TPAI (ID integer primary key)",
          "insert into TPAI select CODIGO from TCLI",
          "alter table TCLI add constraint DO_PAI foreign key (CODIGO) references TPAI",
          "create trigger GCLI for TCLI before insert as begin new.NOME = 'x'; end"})
        banco.Executa(comando);
    std::set<std::string> durante;
    banco.Conexao().Observa([&](std::string_view sql) {
        if (!Insere(sql, "TCLI")) return;
        durante.insert(
            Linhas(banco.banco_.Conexao(),
                   "select trim(rdb$index_name) from rdb$indices where rdb$relation_name = 'TCLI' union all"
                   " select trim(rdb$trigger_name) from rdb$triggers where rdb$relation_name = 'TCLI' union all"
                   " select trim(rdb$constraint_type) from rdb$relation_constraints where rdb$relation_name = 'TCLI'"
                   " and rdb$constraint_type <> 'NOT NULL' order by 1"));
    });
    banco.Reconstroi();
    EXPECT_EQ(durante, std::set<std::string>{"ICLI_UNICO;PK_TCLI;PRIMARY KEY"});
    std::vector<std::string> depois;
    for (const auto& indice : banco.Conexao().Indices("TCLI")) depois.push_back(indice.nome);
    std::ranges::sort(depois);
    EXPECT_EQ(Junta(depois, " "), "DO_PAI ICLI_NOME ICLI_UNICO MEU_INDICE UNICO");
    EXPECT_EQ(banco.Le("select count(*) from TCLI where NOME starting 'José'"), "5");
}

TEST(NovaTest, WhatTheDropTakesAlongComesBackOrIsKept) {
    TCliente banco;
    banco.Executa("create descending index MEU_INDICE on TCLI (VALOR, NOME)");
    banco.Executa("grant select, update (NOME) on TCLI to MARIA with grant option");
    banco.Executa("alter table TCLI add constraint UNICO unique (NOME, CODIGO)");
    banco.Executa("alter table TCLI add constraint CERTO check (VALOR > 0)");
    banco.Executa("create table TPAI (ID integer primary key)");
    banco.Executa("insert into TPAI select CODIGO from TCLI");
    banco.Executa("alter table TCLI add constraint DO_PAI foreign key (CODIGO) references TPAI on delete cascade");
    banco.Executa("alter table TCLI add unique (VALOR, NOME)");
    banco.Executa("alter table TCLI add DOBRO computed by (CODIGO * 2)");
    banco.Executa("create index DORMENTE on TCLI computed by (upper(NOME))");
    banco.Executa("alter index DORMENTE inactive");
    banco.Executa("comment on index DORMENTE is 'só no fim do ano'");
    banco.Executa("comment on table TCLI is 'Clientes d''oeste'");
    banco.Executa("comment on column TCLI.NOME is '" + std::string(40'000, 'n') + " ação''s'");
    banco.Executa("comment on column TCLI.CODIGO is '" + std::string(40'000, '1') + "'");
    const std::string objetos =
        "select trim(rdb$constraint_type), iif(rdb$constraint_name starting 'INTEG_', '', trim(rdb$constraint_name))"
        " from rdb$relation_constraints where rdb$relation_name = 'TCLI' and rdb$constraint_type <> 'NOT NULL'"
        " union all select 'on delete', rdb$delete_rule from rdb$ref_constraints where rdb$constraint_name = 'DO_PAI'"
        " union all select 'inactive', cast(rdb$index_inactive as varchar(9)) from rdb$indices"
        " where rdb$index_name = 'DORMENTE' order by 1, 2";
    const std::string comentarios =
        "select cast(rdb$description as blob sub_type 0) from rdb$relations where rdb$relation_name = 'TCLI'"
        " union all select cast(rdb$description as blob sub_type 0) from rdb$relation_fields"
        " where rdb$relation_name = 'TCLI' and rdb$description is not null"
        " union all select cast(rdb$description as blob sub_type 0) from rdb$indices"
        " where rdb$index_name = 'DORMENTE'";
    const std::string eram = banco.Le(objetos), ditos = banco.Le(comentarios);
    EXPECT_GT(ditos.size(), 80'000U);
    banco.Executa("create trigger GCLI for TCLI before insert as begin new.VALOR = 'ç' || 1; end");
    banco.Executa("create trigger G_TUDO for TCLI inactive after insert or update or delete position 3 as begin end");
    banco.Reconstroi();
    const std::string permissoes =
        "select trim(rdb$privilege), rdb$grant_option, trim(rdb$field_name) from rdb$user_privileges where"
        " rdb$relation_name = 'TCLI' and rdb$user = 'MARIA' order by 1";
    EXPECT_EQ(banco.Le(permissoes), "S|1|<null>;U|1|NOME");
    std::vector<std::string> indices;
    for (const auto& indice : banco.Conexao().Indices("TCLI"))
        indices.push_back(indice.nome + (indice.descendente ? "-" : "+"));
    EXPECT_NE(Junta(indices, " ").find("DORMENTE+ DO_PAI+ ICLI_NOME+ MEU_INDICE- "), std::string::npos)
        << Junta(indices, " ");
    EXPECT_EQ(banco.Le(objetos), eram);
    EXPECT_TRUE(banco.Le(comentarios) == ditos);
    EXPECT_EQ(banco.Le("select first 1 DOBRO from TCLI order by CODIGO desc"), "10");
    EXPECT_EQ(banco.Le("select count(*) from rdb$relation_fields where rdb$relation_name = 'BTCLI'"
                       " and rdb$description is not null"),
              "0");
    EXPECT_EQ(banco.tela_.memo2.size(), 1U) << Junta(banco.tela_.memo2, "\n");
    EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "GCLI"));
    for (const char* fonte : {"create trigger GCLI for TCLI active before insert position 0\\nas begin",
                              "create trigger G_TUDO for TCLI inactive after insert or update or delete position 3\\n",
                              "new.VALOR = 'ç' || 1"})
        EXPECT_NE(banco.Rejeitados().find(fonte), std::string::npos) << fonte << "\n" << banco.Rejeitados();
}

TEST(NovaTest, WhatOfAColumnDoesNotComeBackIsNamedAndKept) {
    TBancoDaNova banco("WIN1252", true, "", "WIN1252");
    banco.Guardada("TCLI", {{"CODIGO", "ftInteger", 0, 1}, {"NOME", "ftString", 20}, {"UF", "ftString", 2, 0, "SP"}});
    banco.Executa(
        "create table TCLI (CODIGO integer generated by default as identity primary key, NOME varchar(20)"
        " default 'sem nome' collate WIN_PTBR, UF varchar(2) default 'SP')");
    banco.Executa("insert into TCLI (CODIGO) values (7)");
    banco.Executa("comment on column TCLI.UF is 'estado'");
    const auto outra = CriaConexaoFirebird(banco.banco_.Parametros());
    outra->Open();
    outra->ExecuteDirect("comment on table TCLI is 'Ω: letra que a conexão do alias não tem'");
    outra->Close();
    banco.Pacote("TCLI", {{"CODIGO", "ftInteger", 0, 1}, {"NOME", "ftString", 30}, {"UF", "ftString", 2, 0, "SP"}});
    banco.Reconstroi();
    EXPECT_EQ(banco.Le("select * from TCLI"), "7|sem nome|SP");
    EXPECT_EQ(banco.tela_.memo2,
              (std::vector<std::string>{"Tabela TCLI: propriedades de colunas não recriadas, fonte no arquivo de"
                                        " rejeitados: CODIGO, NOME, NOME",
                                        "Tabela TCLI: comentários não recriados, fonte no arquivo de rejeitados:"
                                        " TCLI, TCLI.UF"}));
    for (const char* fonte : {"generated by default as identity", "collate WIN_PTBR", "default 'sem nome'", "Ω: letra",
                              "comment on column TCLI.UF is 'estado'"})
        EXPECT_NE(banco.Rejeitados().find(fonte), std::string::npos) << fonte << "\n" << banco.Rejeitados();
    EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2");
}

TEST(NovaTest, AValueThatIsBlankOrMissingCostsNoRow) {
    const struct {
        std::string velha, valor;
        TAtributo nova;
        std::string depois;
    } casos[] = {
        {"V varchar(5)", "' '", {"V", "ftInteger"}, "V is null"},
        {"V varchar(5)", "' '", {"V", "ftFloat"}, "V is null"},
        {"V varchar(5)", "' '", {"V", "ftDate"}, "V is null"},
        {"V varchar(5)", "' '", {"V", "ftTime"}, "V is null"},
        {"V varchar(5)", "' '", {"V", "ftDateTime"}, "V is null"},
        {"V varchar(5)", "' '", {"V", "ftInteger", 0, 1}, "V = 0"},
        {"V blob", "''", {"V", "ftInteger"}, "V is null"},
        {"V blob", "'  '", {"V", "ftDate"}, "V is null"},
        {"DATA date", "null", {"DATA", "ftDate", 0, 1}, "DATA >= current_date - 1"},
        {"DATA timestamp", "null", {"DATA", "ftDateTime", 0, 1}, "DATA >= current_date - 1"},
        {"V integer", "1", {"DT_NOVA", "ftDate", 0, 1}, "DT_NOVA >= current_date - 1"},
        {"V integer", "1", {"DT_HORA", "ftTime", 0, 1}, "DT_HORA is not null"},
        {"V integer", "1", {"DT_NUMERO", "ftInteger", 0, 1}, "DT_NUMERO = 0"},
        {"V integer", "1", {"DT_TEXTO", "ftString", 10, 1}, "DT_TEXTO >= cast(current_date - 1 as varchar(10))"},
        {"V integer", "1", {"DIA", "ftDate", 0, 1}, "DIA >= current_date - 1"},
    };
    for (const auto& caso : casos) {
        SCOPED_TRACE(caso.velha + " " + caso.valor + " " + caso.nova.tipo);
        TBancoDaNova banco;
        const std::string nome = caso.velha.substr(0, caso.velha.find(' '));
        const TAtributo codigo{"CODIGO", "ftInteger", 0, 1};
        banco.Guardada("TREC", {codigo, {nome, "ftString", 5}});
        banco.Pacote("TREC", {codigo, caso.nova});
        banco.Executa("create table TREC (CODIGO integer not null primary key, " + caso.velha + ")");
        for (const std::string linha : {"1", "2"})
            banco.Executa("insert into TREC values (" + linha + ", " + caso.valor + ")");
        banco.Reconstroi();
        EXPECT_EQ(banco.Le("select CODIGO from TREC where " + caso.depois), "1;2") << Junta(banco.tela_.memo2, "\n");
        EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2");
        EXPECT_EQ(banco.Rejeitados(), "");
    }
}

TEST(NovaTest, AnOlderInterruptedRebuildGoesOnFromItsBackup) {
    TCliente banco;
    banco.Executa("create table BTCLI (CODIGO integer not null, NOME varchar(20), VALOR integer, SUMIU integer)");
    banco.Executa("insert into BTCLI (CODIGO, NOME, VALOR) select * from TCLI");
    banco.Executa("delete from TCLI where CODIGO > 2");
    banco.Executa("insert into TCLI values (6, 'entrou depois', 60)");
    banco.Executa("update SARQUIVO set VERSAO = -1");
    banco.Reconstroi();
    EXPECT_EQ(banco.Clientes(), "1|José 1|10;2|José 2|20;3|José 3|30;4|José 4|40;5|José 5|50;6|entrou depois|60");
    EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "2");
    EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "SUMIU"));
    EXPECT_FALSE(TTelaDeTeste::Contem(banco.tela_.memo2, "ATENÇÃO"));
}

TEST(NovaTest, WorkDoneAfterAFailedDropIsInTheNextBackup) {
    TCliente banco;
    banco.Executa("create view VCLI as select NOME from TCLI");
    banco.Reconstroi();
    EXPECT_EQ(banco.Le("select VERSAO from SARQUIVO"), "-1");
    banco.Executa("drop view VCLI");
    banco.Executa("update TCLI set NOME = 'mudou' where CODIGO = 1");
    banco.Executa("delete from TCLI where CODIGO > 2");
    banco.Reconstroi();
    EXPECT_EQ(banco.Clientes(), "1|mudou|10;2|José 2|20");
}

}  // namespace
}  // namespace wkd
