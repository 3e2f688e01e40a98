#include "values/Valor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "values/Erros.h"

namespace wkd {
namespace {

constexpr auto kMaximo = std::numeric_limits<std::int64_t>::max();
constexpr auto kMinimo = std::numeric_limits<std::int64_t>::min();

TDataHora Quando(int ano, int mes, int dia, std::int64_t segundos, std::int64_t fracao = 0) {
    return {DataDe(ano, mes, dia), THora{segundos * kTiquesPorSegundo + fracao}};
}

/// Content kept elsewhere, read in pieces of an awkward size; counts how often it was opened.
struct TConteudoDeTeste : TConteudo {
    struct TLeitor : TLeitorBytes {
        std::string resto;
        std::size_t Le(std::span<char> destino) override {
            const auto lidos = resto.copy(destino.data(), std::min<std::size_t>(destino.size(), 777));
            resto.erase(0, lidos);
            return lidos;
        }
    };
    explicit TConteudoDeTeste(std::string b) : bytes(std::move(b)) {}
    std::unique_ptr<TLeitorBytes> Abre() const override {
        ++aberturas;
        auto leitor = std::make_unique<TLeitor>();
        leitor->resto = bytes;
        return leitor;
    }
    std::string bytes;
    mutable int aberturas = 0;
};

TEST(Valor, TheTextOfEachTypeReadsBackEqual) {
    struct TCaso {
        TTipoDado tipo;
        TValor valor;
        std::string texto;
    };
    const double infinito = std::numeric_limits<double>::infinity();
    const TCaso casos[] = {
        {TTipoDado::Inteiro, kMaximo, "9223372036854775807"},
        {TTipoDado::Inteiro, kMinimo, "-9223372036854775808"},
        {TTipoDado::Decimal, TDecimal{12345, 2}, "123.45"},
        {TTipoDado::Decimal, TDecimal{-5, 2}, "-0.05"},
        {TTipoDado::Decimal, TDecimal{1200, 2}, "12.00"},
        {TTipoDado::Decimal, TDecimal{7, 18}, "0.000000000000000007"},
        {TTipoDado::Decimal, TDecimal{kMinimo, 18}, "-9.223372036854775808"},
        {TTipoDado::Flutuante, 0.1, "0.1"},
        {TTipoDado::Flutuante, 0.1 + 0.2, "0.30000000000000004"},
        {TTipoDado::Flutuante, 1.7976931348623157e308, "1.7976931348623157e+308"},
        {TTipoDado::Flutuante, 5e-324, "5e-324"},
        {TTipoDado::Flutuante, infinito, "inf"},
        {TTipoDado::Flutuante, -infinito, "-inf"},
        {TTipoDado::Flutuante, std::nan(""), "nan"},
        {TTipoDado::Logico, true, "True"},
        {TTipoDado::Logico, false, "False"},
        {TTipoDado::Data, DataDe(2024, 2, 29), "2024-02-29"},
        {TTipoDado::Data, DataDe(1, 1, 1), "0001-01-01"},
        {TTipoDado::Data, DataDe(9999, 12, 31), "9999-12-31"},
        {TTipoDado::Hora, THora{(23 * 3600 + 59 * 60 + 59) * kTiquesPorSegundo + 9999999}, "23:59:59.9999999"},
        {TTipoDado::Hora, THora{0}, "00:00:00"},
        {TTipoDado::DataHora, Quando(2023, 12, 31, 3661, 1200000), "2023-12-31 01:01:01.12"},
        {TTipoDado::DataHora, Quando(1899, 12, 30, 0), "1899-12-30 00:00:00"},
        {TTipoDado::DataHora, Quando(2000, 1, 1, 1, 1), "2000-01-01 00:00:01.0000001"},
        {TTipoDado::Memo, "ação  ", "ação  "},
    };
    for (const TCaso& caso : casos) {
        EXPECT_EQ(caso.valor.ComoTexto(), caso.texto);
        EXPECT_TRUE(TValor(caso.texto).Converte(caso.tipo) == caso.valor) << caso.texto;
    }
}

TEST(Valor, ConvertsBetweenTypesWithoutLoss) {
    struct TCaso {
        TValor de;
        TTipoDado tipo;
        TValor para;
    };
    const TCaso casos[] = {
        {" +12 ", TTipoDado::Inteiro, 12},
        {"10,00", TTipoDado::Inteiro, 10},
        {"1e3", TTipoDado::Inteiro, 1000},
        {TDecimal{1200, 2}, TTipoDado::Inteiro, 12},
        {-3.0, TTipoDado::Inteiro, -3},
        {true, TTipoDado::Inteiro, 1},
        {"12,5", TTipoDado::Flutuante, 12.5},
        {TDecimal{1, 1}, TTipoDado::Flutuante, 0.1},
        {std::int64_t{1} << 53, TTipoDado::Flutuante, 9007199254740992.0},
        {0.25, TTipoDado::Decimal, TDecimal{25, 2}},
        {"0.50000000000000000000", TTipoDado::Decimal, TDecimal{5, 1}},
        {"1e18", TTipoDado::Decimal, TDecimal{1'000'000'000'000'000'000, 0}},
        {"sim", TTipoDado::Logico, true},
        {"N", TTipoDado::Logico, false},
        {TDecimal{10, 1}, TTipoDado::Logico, true},
        {"29/02/2024", TTipoDado::Data, DataDe(2024, 2, 29)},
        {"2024-02-29T00:00:00", TTipoDado::Data, DataDe(2024, 2, 29)},
        {Quando(2024, 2, 29, 0), TTipoDado::Data, DataDe(2024, 2, 29)},
        {"1/3/2024 7:05", TTipoDado::DataHora, Quando(2024, 3, 1, 7 * 3600 + 300)},
        {"2024-03-01T07:05:00.5", TTipoDado::DataHora, Quando(2024, 3, 1, 7 * 3600 + 300, 5000000)},
        {THora{600 * kTiquesPorSegundo}, TTipoDado::DataHora, Quando(1899, 12, 30, 600)},
        {Quando(1899, 12, 30, 600), TTipoDado::Hora, THora{600 * kTiquesPorSegundo}},
        {Quando(1900, 1, 1, 600), TTipoDado::Hora, THora{600 * kTiquesPorSegundo}},
        {42, TTipoDado::Texto, "42"},
        {TBytes{"a\xE7\xE3o"}, TTipoDado::Texto, "ação"},
        {TBytes{"17"}, TTipoDado::Inteiro, 17},
        {"x", TTipoDado::Bytes, TBytes{"x"}},
        {"   ", TTipoDado::Inteiro, TValor()},
        {"", TTipoDado::DataHora, TValor()},
        {"", TTipoDado::Texto, ""},
        {TValor(), TTipoDado::Texto, TValor()},
    };
    for (const TCaso& caso : casos) {
        const TValor convertido = caso.de.Converte(caso.tipo);
        EXPECT_TRUE(convertido == caso.para) << caso.de.ComoTexto() << " deu " << convertido.ComoTexto();
        EXPECT_EQ(convertido.Nulo(), caso.para.Nulo());
    }
}

TEST(Valor, RefusesAConversionThatWouldLosePartOfTheValue) {
    const std::pair<TValor, TTipoDado> casos[] = {
        {1.5, TTipoDado::Inteiro},
        {std::nan(""), TTipoDado::Inteiro},
        {9223372036854775808.0, TTipoDado::Inteiro},
        {"9223372036854775808", TTipoDado::Inteiro},
        {"12x", TTipoDado::Inteiro},
        {"1.234,56", TTipoDado::Flutuante},
        {"- 5", TTipoDado::Flutuante},
        {"1e400", TTipoDado::Flutuante},
        {kMaximo, TTipoDado::Flutuante},
        {"0.1234567890123456789", TTipoDado::Decimal},
        {"1e19", TTipoDado::Decimal},
        {"1e", TTipoDado::Decimal},
        {".", TTipoDado::Decimal},
        {"2", TTipoDado::Logico},
        {2, TTipoDado::Logico},
        {"2023-02-29", TTipoDado::Data},
        {"31/04/2023", TTipoDado::Data},
        {"2023-13-01", TTipoDado::Data},
        {"01/01/23", TTipoDado::Data},
        {Quando(2023, 1, 1, 1), TTipoDado::Data},
        {Quando(2023, 1, 1, 1), TTipoDado::Hora},
        {"24:00:00", TTipoDado::Hora},
        {"12:60", TTipoDado::Hora},
        {"2023-01-01 10:00:00.12345678", TTipoDado::DataHora},
        {"2023-01-01 10:00 h", TTipoDado::DataHora},
        {20230101, TTipoDado::Data},
        {DataDe(2023, 1, 1), TTipoDado::Inteiro},
    };
    for (const auto& [valor, tipo] : casos) EXPECT_THROW(valor.Converte(tipo), TErroConversao) << valor.ComoTexto();
}

TEST(Valor, AnIntegerCutsTheFractionAndNullIsZero) {
    EXPECT_EQ(TValor("12,9").ComoInteiro(), 12);
    EXPECT_EQ(TValor(-12.9).ComoInteiro(), -12);
    EXPECT_EQ(TValor(TDecimal{-199, 2}).ComoInteiro(), -1);
    EXPECT_EQ(TValor("9223372036854775807").ComoInteiro(), kMaximo);
    EXPECT_EQ(TValor().ComoInteiro() + TValor(" ").ComoInteiro(), 0);
    EXPECT_THROW(TValor("abc").ComoInteiro(), TErroConversao);
    EXPECT_THROW(TValor("1e30").ComoInteiro(), TErroConversao);
    EXPECT_THROW(TValor(DataDe(2020, 1, 1)).ComoDouble(), TErroConversao);
}

TEST(Valor, BlobsAreEqualByBytesAndNumbersByValue) {
    const std::string longo(100'000, 'x');
    const auto conteudo = std::make_shared<TConteudoDeTeste>(longo);
    const TValor blob{std::shared_ptr<const TConteudo>(conteudo)};
    EXPECT_TRUE(blob == blob);
    EXPECT_EQ(conteudo->aberturas, 0) << "o mesmo conteúdo não precisa ser lido";
    EXPECT_TRUE(blob == TValor(TBytes{longo}));
    EXPECT_TRUE(TValor(longo) == blob);
    EXPECT_FALSE(blob == TValor(TBytes{longo + "y"}));
    EXPECT_FALSE(blob == TValor(TBytes{longo.substr(1) + "y"}));
    EXPECT_FALSE(blob == TValor());
    EXPECT_EQ(blob.ComoBytes(), longo);

    EXPECT_TRUE(TValor(TDecimal{100, 2}) == TValor(1));
    EXPECT_TRUE(TValor(TDecimal{10, 1}) == TValor(TDecimal{1000, 3}));
    EXPECT_FALSE(TValor(TDecimal{101, 2}) == TValor(1));
    EXPECT_FALSE(TValor("1") == TValor(1));
    EXPECT_FALSE(TValor("") == TValor());
}

TEST(Calendario, GoesThereAndBackForEveryDayOfFourCenturies) {
    int anterior = 0;
    for (int dias = DataDe(1800, 1, 1).dias; dias <= DataDe(2200, 12, 31).dias; ++dias) {
        const TCalendario c = CalendarioDe({dias});
        ASSERT_EQ(DataDe(c.ano, c.mes, c.dia).dias, dias);
        const int ordem = c.ano * 10000 + c.mes * 100 + c.dia;
        ASSERT_GT(ordem, anterior);
        anterior = ordem;
    }
    EXPECT_EQ(DataDe(1970, 1, 1).dias, 0);
    EXPECT_EQ(DataDe(1, 1, 1).dias, -719162);
}

}  // namespace
}  // namespace wkd
