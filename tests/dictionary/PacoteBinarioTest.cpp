#include <cmath>
#include <cstring>

#include "PacotesDeTeste.h"

namespace wkd {
namespace {

const std::string kExemploA = DeHexa(R"(
    96 19 E0 BD 01 00 00 00 18 00 00 00   | magic, version 1.0, header 24
    01 00 01 00 00 00 03 00 00 00 37 00   | 1 field, 1 row, flags, rows at 55
    07 4E 65 77 43 75 73 74               | "NewCust"
    08 00 04 00 00 00 00 00               | size 8, float
    01 00 04 4C 43 49 44 04 00 01 00 09 04 00 00
    00 00 00 00 00 00 80 3D C3 40)");

const std::string kExemploB = DeHexa(R"(
    9619E0BD0100000018000000 0300 03000000 03000000 8800
    02 4944 0400 0100 0400 0000
    04 4E414D45 0100 4900 0000 0100 05 5749445448 0200 0200 1400
    03 545854 0400 4B00 0000 0100 07 53554254595045 0200 4900 0500 5465787400
    0100 0A 4348414E47455F4C4F47 0400 8200 06000000
         02000000 01000000 08000000 03000000 00000000 02000000
    01 10 01000000 03 6F6C64                | row 1, original: 1, "old", NULL
    08 00 01000000 03 6E6577 02000000 6869  | row 2, modified: 1, "new", "hi"
    02 14 02000000)");

std::string Repetido(std::string_view texto, std::size_t vezes) {
    std::string saida;
    while (vezes-- > 0) saida += texto;
    return saida;
}

TValor UnicoValor(std::string_view bytes) {
    const auto pacote = LeBytes(bytes);
    EXPECT_EQ(pacote.linhas.size(), 1u);
    return pacote.linhas.at(0).at(0);
}

TEST(PacoteBinario, ReadsATableOfOneFieldWithoutHistory) {
    ASSERT_EQ(kExemploA.size(), 65u);
    const auto pacote = LeBytes(kExemploA);
    ASSERT_EQ(pacote.campos.size(), 1u);
    EXPECT_EQ(pacote.campos[0].nome, "NewCust");
    EXPECT_EQ(pacote.linhas, (std::vector<TLinha>{{9851.0}}));
}

TEST(PacoteBinario, ShowsValidRowsAlone) {
    ASSERT_EQ(kExemploB.size(), 168u);
    const auto pacote = LeBytes(kExemploB);
    ASSERT_EQ(pacote.campos.size(), 3u);
    EXPECT_TRUE(pacote.campos[0].requerido);
    EXPECT_EQ(pacote.campos[1].tamanho, 20);
    EXPECT_EQ(pacote.campos[2].tipo, TTipoDado::Memo);
    EXPECT_EQ(pacote.linhas, (std::vector<TLinha>{{1, "new", "hi"}}));
}

TEST(PacoteBinario, DecodesEachKindOfValue) {
    const TDataHora quando{DataDe(1999, 12, 31), THora{(23 * 3600 + 59 * 60 + 58) * kTiquesPorSegundo + 9'990'000}};
    double ms = (730119.0 * 86400 + 23 * 3600 + 59 * 60 + 58) * 1000 + 999;
    std::string bytesMs(8, '\0');
    std::memcpy(bytesMs.data(), &ms, 8);
    const struct {
        const char* caso;
        std::size_t tamanho, tipo;
        std::string bytes;
        TValor esperado;
    } casos[] = {
        {"int1", 1, 1, DeHexa("FE"), -2},
        {"int2", 2, 1, DeHexa("00 80"), -32768},
        {"int8", 8, 1, DeHexa("FFFFFFFFFFFFFF7F"), INT64_MAX},
        {"uint1", 1, 2, DeHexa("FE"), 254},
        {"uint8 past int64", 8, 2, DeHexa("FFFFFFFFFFFFFFFF"), "18446744073709551615"},
        {"bool", 2, 3, DeHexa("00 01"), true},
        {"float4", 4, 4, DeHexa("0000C03F"), 1.5},
        {"float10", 10, 4, DeHexa("00000000000000C0 FFBF"), -1.5},
        {"single", 4, 0x1B, DeHexa("0000C03F"), 1.5},
        {"bcd", 6, 5, DeHexa("05 02 12345000"), TDecimal{12345, 2}},
        {"negative bcd", 6, 5, DeHexa("05 82 12345000"), TDecimal{-12345, 2}},
        {"blank bcd", 6, 5, DeHexa("05 40 00000000"), TValor()},
        {"bcd of 20 digits", 12, 0x12, DeHexa("14 02 12345678901234567890"), "123456789012345678.90"},
        {"date", 4, 6, U32(719163), DataDe(1970, 1, 1)},
        {"time", 4, 7, U32(86399999), THora{86399999LL * 10000}},
        {"timestamp", 8, 8, bytesMs, quando},
        {"SQL timestamp", 16, 0x11, U16(1999) + U16(12) + U16(31) + U16(23) + U16(59) + U16(58) + U32(999), quando},
        {"1252 text", 1, 0x49, DeHexa("04 61E7E36F"), "ação"},
        {"UTF-8 text in an ANSI field", 2, 0x49, DeHexa("0600 61C3A7C3A36F"), "ação"},
        {"unicode text", 2, 0x4A, DeHexa("0600 E7003DD800DE"), "ç😀"},
        {"bytes", 3, 0x0B, DeHexa("00FF80"), TBytes{std::string("\0\xFF\x80", 3)}},
        {"bytes with prefix", 2, 0x4B, DeHexa("0200 00FF"), TBytes{std::string("\0\xFF", 2)}},
        {"blob", 4, 0x4B, DeHexa("03000000 00FF80"), TBytes{std::string("\0\xFF\x80", 3)}},
    };
    for (const auto& caso : casos) {
        SCOPED_TRACE(caso.caso);
        EXPECT_EQ(UnicoValor(Binario(1, 1, CampoX(caso.tamanho, caso.tipo), std::string(2, '\0') + caso.bytes)),
                  caso.esperado);
    }
}

TEST(PacoteBinario, InheritsWhatDidNotChange) {
    // Rows 1 and 2 superseded, row 3 shows; each takes its second field over from the one before. Row 4 was inserted
    // and never assigned. The log comes in both widths.
    const auto descricoes = CampoX(4, 1) + "\x01Y" + U16(1) + U16(0x49) + U16(0) + U16(0);
    const auto linhas = DeHexa("01 00 01000000 02 6F6B  09 08 02000000  08 08 03000000  04 08 04000000");
    for (const std::size_t largura : {2u, 4u}) {
        std::string registro;
        for (const std::size_t numero : {2, 1, 8, 3, 2, 8, 4, 0, 4})
            registro += largura == 2 ? U16(numero) : U32(numero);
        const auto propriedade = "\x0A" + std::string("CHANGE_LOG") + U16(largura) + U16(0x82) + U32(9) + registro;
        const auto pacote = LeBytes(Binario(2, 4, descricoes, linhas, U16(1) + propriedade));
        EXPECT_EQ(pacote.linhas, (std::vector<TLinha>{{3, "ok"}, {4, TValor()}}));
    }
}

TEST(PacoteBinario, ACircularRecordDoesNotHoldTheReader) {
    const auto registro = U32(1) + U32(2) + U32(8) + U32(2) + U32(1) + U32(8) + U32(3) + U32(999) + U32(8);
    const auto propriedade = "\x0A" + std::string("CHANGE_LOG") + U16(4) + U16(0x82) + U32(9) + registro;
    const auto pacote = LeBytes(Binario(1, 3, CampoX(4, 1), DeHexa("0802 0802 0802"), U16(1) + propriedade));
    EXPECT_EQ(pacote.linhas, (std::vector<TLinha>{{TValor()}, {TValor()}, {TValor()}}));
}

TEST(PacoteBinario, RefusesNamingFilePlaceFieldAndCause) {
    const std::string linha(2, '\0');
    const auto comTipo = [&](std::size_t tamanho, std::size_t tipo, const std::string& bytes) {
        return Binario(1, 1, CampoX(tamanho, tipo), linha + bytes);
    };
    const auto delta = "\x0D" + std::string("DATASET_DELTA") + U16(4) + U16(1) + U32(1);
    const struct {
        std::string bytes;
        std::vector<std::string> partes;
    } casos[] = {
        {comTipo(4, 12, {}), {"campo 'X'", "12", "tabela aninhada"}},
        {comTipo(8, 13, {}), {"campo 'X'", "13"}},
        {comTipo(8, 0x24, {}), {"campo 'X'", "fuso"}},
        {comTipo(4, 0x81, {}), {"campo 'X'", "129"}},
        {comTipo(6, 5, DeHexa("41 02 12345000")), {"campo 'X'", "posição 38", "precisão 65"}},
        {comTipo(6, 5, DeHexa("02 03 12345000")), {"campo 'X'", "3 casas"}},
        {comTipo(6, 5, DeHexa("05 02 1A345000")), {"campo 'X'", "algarismo 10"}},
        {comTipo(4, 6, U32(0)), {"campo 'X'", "data fora do calendário"}},
        {comTipo(4, 7, U32(86400000)), {"campo 'X'", "hora fora do dia"}},
        {comTipo(8, 8, DeHexa("000000000000F87F")), {"campo 'X'", "fora do calendário"}},
        {comTipo(2, 0x4A, DeHexa("0200 00D8")), {"campo 'X'", "UTF-16"}},
        {comTipo(2, 0x49, DeHexa("FFFF 41")), {"campo 'X'", "posição 40", "65535"}},
        {comTipo(1, 1, "\x01zzz"), {"posição 39", "3 bytes depois da última linha"}},
        {Binario(1, 0xFFFFFFFF, CampoX(1, 1), linha), {"4294967295 linhas"}},
        {Binario(1, 0, CampoX(1, 1), {}, U16(1) + delta), {"DATASET_DELTA"}},
        {Binario(0, 0, {}, {}), {"não tem campos"}},
    };
    for (const auto& caso : casos) {
        const auto erro = ErroDe(caso.bytes);
        EXPECT_TRUE(Contem(erro, "'TESTE.WKD'")) << erro;
        for (const auto& parte : caso.partes) EXPECT_TRUE(Contem(erro, parte)) << parte << " em: " << erro;
    }
}

TEST(PacoteBinario, ChecksWhereRowsBeginModulo65536) {
    // A change log longer than 65536 bytes makes the header's offset wrap.
    const auto registro =
        "\x0A" + std::string("CHANGE_LOG") + U16(4) + U16(0x82) + U32(18000) + Repetido(U32(0), 18000);
    const auto bytes = Binario(1, 1, CampoX(1, 1), std::string("\0\0\7", 3), U16(1) + registro);
    EXPECT_EQ(LeBytes(bytes).linhas, (std::vector<TLinha>{{7}}));
    auto errado = bytes;
    errado[22] = static_cast<char>(errado[22] + 1);
    EXPECT_TRUE(Contem(ErroDe(errado), "não começam onde o cabeçalho diz"));
}

TEST(PacoteBinario, ATextInheritedManyTimesDoesNotFillTheMemory) {
    // 150,000 visible rows of 14 bytes each ask for the same 60,000 characters: 9 GB from 2 MB.
    constexpr std::size_t kLinhas = 150'000;
    std::string registro, linhas = std::string(2, '\0') + U16(60'000) + std::string(60'000, 'a');
    for (std::size_t i = 2; i <= kLinhas; ++i) {
        registro += U32(i) + U32(1) + U32(8);
        linhas += DeHexa("08 02");
    }
    const auto propriedade =
        "\x0A" + std::string("CHANGE_LOG") + U16(4) + U16(0x82) + U32(registro.size() / 4) + registro;
    const auto erro = ErroDe(Binario(1, kLinhas, CampoX(2, 0x49), linhas, U16(1) + propriedade));
    EXPECT_TRUE(Contem(erro, "memória demais")) << erro;
}

}  // namespace
}  // namespace wkd
