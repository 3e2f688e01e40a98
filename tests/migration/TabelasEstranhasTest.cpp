#include "NovaApoio.h"

namespace wkd {
namespace {

/// What a dictionary may hold although nobody expects it.
struct TCasoEstranho {
    const char* nome;
    std::string tabela;
    std::vector<std::string> criacao;
    TAtributos novos;
    std::string consulta, esperado;
    const char* aviso = "";  // part of a line of Memo2
    bool reconstruida = true;
};

TAtributos MuitasColunas() {
    TAtributos colunas = {{"CODIGO", "ftInteger", 0, 1}};
    for (int i = 1; i < 250; ++i) colunas.push_back({"C" + std::to_string(i), "ftString", 10});
    return colunas;
}

std::string CriaMuitas() {
    std::string colunas = "create table TMUI (CODIGO integer not null primary key";
    for (int i = 1; i < 250; ++i) colunas += ", C" + std::to_string(i) + " varchar(9)";
    return colunas + ")";
}

std::vector<TCasoEstranho> Casos() {
    const TAtributo codigo = {"CODIGO", "ftInteger", 0, 1};
    const std::string longo(31, 'T');
    const bool cabe = !ServidorDosTestes().empty();  // 4.0 has names of 63 letters
    return {
        {"only blobs",
         "TBLO",
         {"create table TBLO (FOTO blob, NOTA blob sub_type 1)",
          "insert into TBLO values (rpad('', 4000, 'á'), 'nota ç')", "insert into TBLO values (null, '')"},
         {{"FOTO", "ftBlob"}, {"NOTA", "ftMemo"}},
         "select t.NOTA, octet_length(t.FOTO) from TBLO t join BTBLO b on b.FOTO is not distinct from t.FOTO",
         "nota ç|8000;|<null>"},
        {"no row", "TVAZ", {"create table TVAZ (CODIGO integer)"}, {codigo}, "select count(*) from TVAZ", "0"},
        {"250 columns",
         "TMUI",
         {CriaMuitas(), "insert into TMUI (CODIGO, C1, C249) values (1, 'um', 'fim')"},
         MuitasColunas(),
         "select C1, C2, C249 from TMUI",
         "um|<null>|fim"},
        {"every column in the key",
         "TTUD",
         {"create table TTUD (A varchar(5) not null, B integer not null, C double precision not null)",
          "insert into TTUD values ('a ', 0, 0.1)", "insert into TTUD values ('', -1, 1e-300)"},
         {{"A", "ftString", 6, 1}, {"B", "ftInteger", 0, 1}, {"C", "ftFloat", 0, 1}},
         "select '[' || A || ']', B, C from TTUD",
         "[a ]|0|0.1;[]|-1|1e-300"},
        {"single precision without a key",
         "TFLO",
         {"create table TFLO (PRECO float, CURTO smallint, FIXO numeric(9,2))",
          "insert into TFLO values (0.1, -3, 1.20)", "insert into TFLO values (1e-30, null, null)"},
         {{"PRECO", "ftFloat"}, {"CURTO", "ftFloat"}, {"FIXO", "ftFloat"}},
         "select PRECO, CURTO, FIXO from TFLO",
         "0.10000000149011612|-3|1.2;1.0000000031710769e-30|<null>|<null>"},
        {"a name of 31 letters",
         longo,
         {"create table " + longo + " (CODIGO integer)", "insert into " + longo + " values (7)"},
         {codigo},
         "select CODIGO from " + longo,
         "7",
         cabe ? "" : "não reconstruída",
         cabe},
        {"a quote in a default",
         "TASP",
         {"create table TASP (CODIGO integer)", "insert into TASP values (1)"},
         {codigo, {"MARCA", "ftString", 10, 0, "d'oeste"}},
         "select CODIGO, MARCA from TASP",
         "1|D'OESTE"},
        {"a computed column",
         "TCOM",
         {"create table TCOM (CODIGO integer, DOBRO computed by (CODIGO * 2))", "insert into TCOM (CODIGO) values (4)"},
         {codigo},
         "select * from TCOM",
         "4|8"},
        {"names in quotes",
         "TNOM",
         {"create table TNOM (CODIGO integer not null, \"ORDER\" integer, \"minha coluna\" integer, \"Date\" integer,"
          " primary key (CODIGO, \"ORDER\"))",
          "create index INOM on TNOM (\"ORDER\")", "insert into TNOM values (1, 2, 3, 4)"},
         {codigo},
         "select t.CODIGO, b.\"ORDER\", b.\"minha coluna\", b.\"Date\" from TNOM t join BTNOM b on b.CODIGO = t.CODIGO",
         "1|2|3|4",
         "colunas que ficaram só em BTNOM: ORDER, minha coluna, Date"},
    };
}

TEST(TabelasEstranhasTest, EachIsRebuiltWholeOrLeftAsItWas) {
    for (const auto& caso : Casos()) {
        SCOPED_TRACE(caso.nome);
        TBancoDaNova banco;
        for (const auto& comando : caso.criacao) banco.Executa(comando);
        banco.Guardada(caso.tabela, {caso.novos.front()});
        banco.Pacote(caso.tabela, caso.novos);
        banco.Reconstroi();
        EXPECT_EQ(banco.Le(caso.consulta), caso.esperado);
        EXPECT_EQ(banco.estado_.falhouApagar, !caso.reconstruida);
        EXPECT_EQ(TTelaDeTeste::Contem(banco.tela_.memo2, caso.aviso), *caso.aviso != '\0')
            << Junta(banco.tela_.memo2, "\n");
        EXPECT_TRUE(banco.tela_.infos.empty()) << Junta(banco.tela_.infos, "\n");
    }
}

TEST(TabelasEstranhasTest, TypesOfFirebird4AreCopiedToTheLastDigit) {
    if (ServidorDosTestes().empty()) GTEST_SKIP() << "no Firebird 4 server: WKD_FIREBIRD4 is not set";
    const std::string valores =
        "-170141183460469231731687303715884105728|12345678901234567890123456789012.5678|"
        "1.234567890123456789012345678901234E+6100|23:59:59.9999 America/Sao_Paulo|"
        "2024-02-29 13:05:09.0070 -03:00";
    TBancoDaNova banco;
    banco.Executa(
        "create table TQUA (CODIGO integer generated by default as identity primary key, I int128, N numeric(38, 4),"
        " D decfloat(34), H time with time zone, Q timestamp with time zone, L boolean, X binary(3))");
    banco.Executa(
        "insert into TQUA (I, N, D, H, Q, L, X) values ('-170141183460469231731687303715884105728',"
        " '12345678901234567890123456789012.5678', 1.234567890123456789012345678901234E+6100,"
        " '23:59:59.9999 America/Sao_Paulo', '2024-02-29 13:05:09.0070 -03:00', true, x'00FF41')");
    banco.Executa("insert into TQUA (I, D) values (-1, 'NaN')");
    banco.Guardada("TQUA", {{"CODIGO", "ftInteger", 0, 1}});
    banco.Pacote("TQUA", {{"CODIGO", "ftInteger", 0, 1},
                          {"I", "ftString", 60},
                          {"N", "ftString", 60},
                          {"D", "ftString", 60},
                          {"H", "ftString", 60},
                          {"Q", "ftString", 60}});
    banco.Reconstroi();
    EXPECT_FALSE(banco.estado_.falhouApagar) << Junta(banco.tela_.memo2, "\n");
    EXPECT_EQ(banco.Le("select I, N, D, H, Q from TQUA where CODIGO = 1"), valores) << "as texts";
    EXPECT_EQ(banco.Le("select I, N, D, H, Q from BTQUA where CODIGO = 1"), valores);
    EXPECT_EQ(banco.Le("select I, D from BTQUA where CODIGO = 2"), "-1|NaN");
    EXPECT_EQ(banco.Le("select count(*) from BTQUA where L = true and X = x'00FF41'"), "1");
    EXPECT_TRUE(TTelaDeTeste::Contem(banco.tela_.memo2, "colunas que ficaram só em BTQUA: L, X"));
}

}  // namespace
}  // namespace wkd
