#include "PacotesDeTeste.h"

namespace wkd {
namespace {

std::string Xml(std::string_view campos, std::string_view linhas, std::string_view declaracao = {}) {
    return std::string(declaracao) + "<DATAPACKET Version=\"2.0\"><METADATA><FIELDS>" + std::string(campos) +
           "</FIELDS></METADATA><ROWDATA>" + std::string(linhas) + "</ROWDATA></DATAPACKET>";
}

/// One field X of that type (and further attributes), one row with that value.
std::string DeUmValor(std::string_view tipo, std::string_view valor) {
    return Xml("<FIELD attrname=\"X\" fieldtype=\"" + std::string(tipo) + "\"/>",
               "<ROW X=\"" + std::string(valor) + "\"/>");
}

TEST(PacoteXml, DecodesEachKindOfValue) {
    const TDataHora quando{DataDe(2024, 2, 29), THora{(13 * 3600 + 5 * 60 + 9) * kTiquesPorSegundo + 70'000}};
    const TDataHora meiaNoite{DataDe(2024, 2, 29), {}};
    const std::string texto = R"(bin.hex" SUBTYPE="Text)";
    const struct {
        std::string tipo, valor;
        TValor esperado;
    } casos[] = {
        {"i1", "-128", -128},
        {"I4", "-2147483648", INT32_MIN},
        {"i8", "9223372036854775807", INT64_MAX},
        {"ui1", "-1", 255},
        {"ui4", "-1", std::int64_t{4294967295}},
        {"r8", "-1.5E-3", -0.0015},
        {"r8", "0.1000000000000000055511151231257827", 0.1},
        {"r4", "0.1", static_cast<double>(0.1f)},
        {"r10", "3", 3.0},
        {"fixed", "-123.45", TDecimal{-12345, 2}},
        {"fixedFMT", "0012345678901234567890.50", "12345678901234567890.50"},
        {"boolean", "True", true},
        {"boolean", "FALSE", false},
        {"date", "20240229", DataDe(2024, 2, 29)},
        {"time", "13:05:09007", quando.hora},
        {"dateTime", "20240229T13:05:09007", quando},
        {"SQLdateTime", "20240229 13:05:09007", quando},
        {"datetime", "2024-02-29T13:05:09.007", quando},
        {"dateTime", "20240229", meiaNoite},
        {"dateTime", "20240229T00:00:00", meiaNoite},
        {"string", "", ""},
        {"string.uni", "a&amp;&lt;&gt;&quot;&apos;&#013;&#1;&#xE7;&#231;", "a&<>\"'\r\1çç"},
        {"string", "linha 1\nlinha 2 > 1", "linha 1\nlinha 2 > 1"},
        {"i4", "", TValor()},
        {"date", "", TValor()},
        {texto, "a&#010;b", "a\nb"},
        {"bin.hex", "AP+A", TBytes{std::string("\0\xFF\x80", 3)}},
        {R"(bin.hex" subtype="Graphics)", "AP&#013;&#010;+\nAQQ==", TBytes{std::string("\0\xFF\x80\x41", 4)}},
    };
    for (const auto& caso : casos) {
        SCOPED_TRACE(caso.tipo + " " + caso.valor);
        EXPECT_EQ(LeBytes(DeUmValor(caso.tipo, caso.valor)).linhas, (std::vector<TLinha>{{caso.esperado}}));
    }
}

/// Most rows have their attributes one blank apart, in the order of the fields and between double quotes.
TEST(PacoteXml, FindsTheValuesOfRowsHoweverTheirAttributesStand) {
    const std::string campos =
        R"(<FIELD attrname="A" fieldtype="string"/><FIELD attrname="B" fieldtype="i4"/>)"
        R"(<FIELD attrname="C" fieldtype="string"/><FIELD attrname="x=&quot;y" fieldtype="i4"/>)";
    const TLinha esperada = {"a>", 2, "ção", TValor()};
    for (const char* linha :
         {R"(<ROW A="a>" B="2" C="ção"/>)", R"(<ROW  A = "a>"	B="2"
 C='ção' />)",
          R"(<ROW C="ção" B="2" A="a>"/>)", R"(<ROW B="2" outro="x" A="a&gt;" C="ção"/>)",
          R"(<ROW A="1" B="1" C="" A="a>" B=" 2 " C="ção"/>)", R"(<row a="a>" b="2" c="ção"/>)",
          R"(<ROW A="a>" B="2" x="y=" C="ção"></ROW>)", R"(<ROW RowState="4" A="a>" B="2" C="ção"/>)"}) {
        SCOPED_TRACE(linha);
        EXPECT_EQ(LeBytes(Xml(campos, linha)).linhas, std::vector<TLinha>{esperada});
    }
}

TEST(PacoteXml, ToleratesWhatFilesBring) {
    const auto pacote = LeBytes(R"(
      <?xml version="1.0"?><!-- comentário > -->
      <DATAPACKET Version="2.0">
        <METADATA><FIELDS>
          <FIELD AttrName='COD_1' FieldName="CÓD 1" FIELDTYPE="I4" Required="TRUE" readonly="true" SUBTYPE="Autoinc">
            <PARAM Name="PROVFLAGS" Value="7" Type="i4" Roundtrip="True"/></FIELD>
          <FIELD attrname="NOME" fieldtype="STRING.UNI" WIDTH="40"/>
          <FIELD attrname="VALOR" fieldtype="fixed" DECIMALS="2" WIDTH="15"/>
        </FIELDS></PARAMS><PARAMS CHANGE_LOG="um dois"/></METADATA>
        <ROWDATA>
          <ROW RowState="4" nome="primeira" cod_1="1" DESCONHECIDO="x"></ROW>
          <ROW RowState="1" COD_1="não vale" />
          <ROW RowState="2" COD_1="2"/><ROW RowState="32" COD_1="3"/>
          <ROW RowState="72" COD_1="4"/>
          <ROW/>
        </ROWDATA></DATAPACKET>
    )");
    ASSERT_EQ(pacote.campos.size(), 3u);
    EXPECT_EQ(pacote.campos[0].nome, "CÓD 1");
    EXPECT_TRUE(pacote.campos[0].requerido);
    EXPECT_TRUE(pacote.campos[0].somenteLeitura);
    EXPECT_EQ(pacote.campos[0].subtipo, "Autoinc");
    EXPECT_EQ(pacote.campos[1].tamanho, 20);
    EXPECT_EQ(pacote.campos[2].escala, 2);
    EXPECT_EQ(pacote.linhas, (std::vector<TLinha>{
                                 {1, "primeira", TValor()}, {4, TValor(), TValor()}, {TValor(), TValor(), TValor()}}));
}

TEST(PacoteXml, ReadsEachEncoding) {
    const auto com = [](std::string_view declaracao, std::string_view valor) {
        return Xml(R"(<FIELD attrname="X" fieldtype="string"/>)", "<ROW X=\"" + std::string(valor) + "\"/>",
                   declaracao);
    };
    std::string utf16("\xFF\xFE"), utf16Inverso("\xFE\xFF");
    for (const char c : com({}, "a?o")) {
        const char baixo = c == '?' ? '\xE7' : c;
        utf16 += {baixo, '\0'};
        utf16Inverso += {'\0', baixo};
    }
    // The declared bytes of "aço" and "a€o" in each character set.
    EXPECT_EQ(LeBytes(com(R"(<?xml version="1.0" encoding="utf-8"?>)", "aço")).linhas[0][0], TValor("aço"));
    EXPECT_EQ(LeBytes(com(R"(<?xml version="1.0" encoding='ISO-8859-1'?>)", "a\xE7o")).linhas[0][0], TValor("aço"));
    EXPECT_EQ(LeBytes(com(R"(<?xml encoding="Windows-1252"?>)", "a\xC3\xA7&#231;")).linhas[0][0], TValor("aÃ§ç"));
    EXPECT_EQ(LeBytes(com(R"(<?xml version="1.0"?>)", "a\x80o")).linhas[0][0], TValor("a€o"));
    EXPECT_EQ(LeBytes(com({}, "aço")).linhas[0][0], TValor("aço"));
    EXPECT_EQ(LeBytes("\xEF\xBB\xBF" + com({}, "aço")).linhas[0][0], TValor("aço"));
    EXPECT_EQ(LeBytes(utf16).linhas[0][0], TValor("aço"));
    EXPECT_EQ(LeBytes(utf16Inverso).linhas[0][0], TValor("aço"));
    EXPECT_TRUE(Contem(ErroDe(com(R"(<?xml encoding="UTF-8"?>)", "a\xE7o")), "campo 'X': o texto não está em UTF-8"));
    EXPECT_TRUE(Contem(ErroDe(com(R"(<?xml encoding="EBCDIC"?>)", "a")), "'EBCDIC'"));
}

TEST(PacoteXml, RefusesNamingFileLineFieldAndCause) {
    const std::string campo = R"(<FIELD attrname="X" fieldtype="i4"/>)";
    const struct {
        std::string bytes, parte;
    } casos[] = {
        {"", "vazio"},
        {"PK\3\4 um zip", "não é um pacote de dados"},
        {"<html><body/></html>", "não é um pacote de dados"},
        {Xml(R"(<FIELD attrname="F" fieldtype="nested"/>)", {}), "campo 'F': o tipo de campo 'nested'"},
        {Xml(R"(<FIELD fieldtype="i4"/>)", {}), "sem attrname"},
        {Xml({}, "<ROW/>"), "não tem campos"},
        {Xml(campo, "\n\n<ROW X=\"12a\"/>"), "linha 3, posição 119, campo 'X': o valor '12a' não é do tipo i4"},
        {Xml(campo, "<ROW X=\"3000000000\"/>"), "'3000000000'"},
        {Xml(campo, "<ROW X=\"1/>"), "atributo sem fim"},
        {Xml(campo, "<ROW X=1/>"), "sem aspas"},
        {Xml(campo, "<ROW RowState=\"novo\"/>"), "RowState"},
        {Xml(campo, {}).substr(0, 100), "termina antes"},
        {Xml(campo, "</ROWDATA>" + campo), "depois das linhas"},
        {Xml("</FIELDS><PARAMS DATASET_DELTA=\"1\"/>", {}), "DATASET_DELTA"},
        {DeUmValor("date", "20230229"), "'20230229'"},
        {DeUmValor("date", "20230228T10:00:00"), "date"},
        {DeUmValor("time", "24:00:00000"), "time"},
        {DeUmValor("dateTime", "20230228T10:00:0"), "dateTime"},
        {DeUmValor("boolean", "talvez"), "boolean"},
        {DeUmValor("ui1", "256"), "'256'"},
        {DeUmValor("fixed", "1e5"), "'1e5'"},
        {DeUmValor("r8", "1,5"), "'1,5'"},
        {DeUmValor("string", "a &nada; b"), "referência"},
        {DeUmValor("string", "&#xD800;"), "referência"},
        {DeUmValor("string", "&#99999999;"), "referência"},
        {DeUmValor("bin.hex", "QUJ"), "Base64"},
        {DeUmValor("bin.hex", "QQ==QQ=="), "Base64"},
        {DeUmValor("bin.hex", "QU?D"), "Base64"},
    };
    for (const auto& caso : casos) {
        const auto erro = ErroDe(caso.bytes);
        EXPECT_TRUE(Contem(erro, "'TESTE.WKD'")) << caso.bytes;
        EXPECT_TRUE(Contem(erro, caso.parte)) << caso.parte << " em: " << erro;
    }
    try {
        LePacote("/nao/existe/SARQUIVO.WKD");
        ADD_FAILURE();
    } catch (const TErroPacote& erro) {
        EXPECT_TRUE(Contem(erro.what(), "não existe")) << erro.what();
    }
}

TEST(PacoteXml, EmptyRowsDoNotMultiplyTheMemory) {
    // 700 KB that would become 20,000 rows of 15,000 values, 12 GB.
    std::string campos, linhas;
    for (int i = 0; i < 15'000; ++i) campos += "<FIELD attrname=\"C" + std::to_string(i) + "\" fieldtype=\"i4\"/>";
    for (int i = 0; i < 20'000; ++i) linhas += "<ROW/>";
    const auto erro = ErroDe(Xml(campos, linhas));
    EXPECT_TRUE(Contem(erro, "memória demais")) << erro;
}

TEST(PacoteXml, ADamagedLongBlobFailsWhenItIsRead) {
    std::string base64(1 << 20, 'A');
    base64[900'000] = '?';
    const auto pacote = LeBytes(DeUmValor("bin.hex", base64));
    try {
        pacote.linhas.at(0).at(0).ComoBytes();
        ADD_FAILURE() << "o defeito passou";
    } catch (const TErroPacote& erro) {
        EXPECT_TRUE(Contem(erro.what(), "campo 'X'")) << erro.what();
        EXPECT_TRUE(Contem(erro.what(), "posição 900")) << erro.what();
    }
}

}  // namespace
}  // namespace wkd
