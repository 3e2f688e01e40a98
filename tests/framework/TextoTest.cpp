#include "values/Texto.h"

#include <gtest/gtest.h>

#include "values/Base64.h"
#include "values/Erros.h"

namespace wkd {
namespace {

TEST(Texto, ReplaceSplitAndJoinMindTheEnds) {
    EXPECT_EQ(Troca("aXbXX", "X", "XY"), "aXYbXYXY");
    EXPECT_EQ(Troca("", "X", "Y"), "");
    EXPECT_EQ(Aspas("d'água"), "'d''água'");
    EXPECT_TRUE(Divide("", ';').empty());
    EXPECT_EQ(Divide("A;;B;", ';'), (std::vector<std::string>{"A", "", "B", ""}));
    EXPECT_EQ(Junta(Divide("A;B", ';'), " and "), "A and B");
    EXPECT_EQ(Apara(" \t a b\r\n"), "a b");
    EXPECT_EQ(AparaFim(" a\t  "), " a\t");
}

TEST(Texto, NamesCompareWithoutCaseAndTrailingBlanks) {
    EXPECT_EQ(ChaveDeNome("tcli_con  "), ChaveDeNome("TCLI_CON"));
    EXPECT_NE(ChaveDeNome(" A"), ChaveDeNome("A"));
    EXPECT_EQ(Maiusculas("ação"), "AçãO");
    EXPECT_TRUE(IgualSemCaixa("Nome", "nOME"));
    EXPECT_FALSE(IgualSemCaixa("Nome", "Nome "));
}

/// Content that comes in pieces of odd sizes.
class TEmPedacos : public TConteudo {
  public:
    explicit TEmPedacos(std::string bytes) : bytes_(std::move(bytes)) {}
    std::unique_ptr<TLeitorBytes> Abre() const override {
        struct TLeitor : TLeitorBytes {
            explicit TLeitor(std::string_view resto) : resto_(resto) {}
            std::size_t Le(std::span<char> destino) override {
                const std::size_t lidos =
                    resto_.copy(destino.data(), std::min<std::size_t>(destino.size(), vez_++ % 7 + 1));
                resto_.remove_prefix(lidos);
                return lidos;
            }
            std::string_view resto_;
            std::size_t vez_ = 0;
        };
        return std::make_unique<TLeitor>(bytes_);
    }

  private:
    std::string bytes_;
};

TEST(Base64, IsTheSameWholeOrInPiecesOfAnySize) {
    EXPECT_EQ(ParaBase64("f") + ParaBase64("fo") + ParaBase64("foo"), "Zg==Zm8=Zm9v");
    EXPECT_EQ(ParaBase64(std::string("\xff\xfe\x00", 3)), "//4A");
    for (std::size_t tamanho : {0u, 1u, 2u, 3u, 100u, 1001u}) {
        std::string bytes;
        for (std::size_t i = 0; i < tamanho; ++i) bytes += static_cast<char>(i * 37);
        std::string texto;
        ParaBase64(TEmPedacos(bytes), [&](std::string_view parte) { texto += parte; });
        EXPECT_EQ(texto, ParaBase64(bytes)) << tamanho;
    }
}

TEST(Codificacao, EveryByteOf1252GoesThereAndBack) {
    for (int b = 0; b < 256; ++b) {
        const std::string byte(1, static_cast<char>(b));
        const std::string utf8 = De1252(byte);
        EXPECT_TRUE(Utf8Valido(utf8)) << b;
        EXPECT_EQ(Para1252(utf8), byte) << b;
    }
    EXPECT_EQ(De1252("\x80 \x8E \x93\x94 \x96 \xE7"), "€ Ž “” – ç");
}

TEST(Codificacao, ACharacterWithoutPlaceIn1252IsAnErrorNeverAQuestionMark) {
    for (const char* texto : {"Ω", "日本", "😀", "a\xCC\x81"}) EXPECT_THROW(Para1252(texto), TErroConversao) << texto;
    EXPECT_THROW(Para1252("\xE7"), TErroConversao);
}

TEST(Codificacao, RecognisesInvalidUtf8) {
    for (const char* bytes : {"\xC3", "\xC0\xAF", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xFF", "a\x80"})
        EXPECT_FALSE(Utf8Valido(bytes));
    EXPECT_TRUE(Utf8Valido("ação € 😀"));
    EXPECT_EQ(TextoDeBytes("a\xE7\xE3o"), "ação");
    EXPECT_EQ(TextoDeBytes("ação"), "ação");
}

}  // namespace
}  // namespace wkd
