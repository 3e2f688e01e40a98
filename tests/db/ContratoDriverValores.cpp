#include <cmath>
#include <limits>

#include "ContratoDriver.h"

namespace wkd {
namespace {

INSTANTIATE_TEST_SUITE_P(Drivers, ContratoDriver, testing::ValuesIn(AmbientesDeBanco()),
                         [](const auto& ambiente) { return ambiente.param.nome; });

using TInteiro = std::numeric_limits<std::int64_t>;

THora Hora(int h, int m, int s, std::int64_t tiques) { return {((h * 60 + m) * 60 + s) * kTiquesPorSegundo + tiques}; }

struct TCaso {
    const char* tipo;
    TValor entra;
    TValor sai;
    bool neutro = true;
};

TCaso Igual(const char* tipo, const TValor& valor, bool neutro = true) { return {tipo, valor, valor, neutro}; }

/// Writes a value into a new column of the type and reads it back.
class TColuna {
  public:
    TColuna(TConnection& conexao, const std::string& tipo) : conexao_(conexao) {
        conexao.ExecuteDirect("create table TVALOR (V " + tipo + ")");
    }
    ~TColuna() { conexao_.ExecuteDirect("drop table TVALOR"); }

    void Grava(const TValor& valor) {
        auto comando = conexao_.Prepara("insert into TVALOR (V) values (:pValor)");
        comando->Atribui("PVALOR", valor);
        EXPECT_EQ(comando->Executa(), 1);
    }
    TValor Le() {
        auto comando = conexao_.Prepara("select V from TVALOR");
        comando->Abre();
        return comando->Proximo() ? comando->Valor(0) : TValor("no row");
    }

  private:
    TConnection& conexao_;
};

TEST_P(ContratoDriver, EveryTypeReadsBackTheValueThatWasWritten) {
    const TCaso casos[] = {
        Igual("smallint", std::int64_t{-32768}),
        Igual("smallint", std::int64_t{32767}),
        Igual("integer", std::int64_t{-2147483648LL}),
        Igual("integer", std::int64_t{2147483647}),
        Igual("bigint", TInteiro::min()),
        Igual("bigint", TInteiro::max()),
        Igual("numeric(4,1)", TDecimal{-9999, 1}),
        Igual("numeric(9,2)", TDecimal{999999999, 2}),
        Igual("numeric(18,4)", TDecimal{-999999999999999999, 4}),
        Igual("float", 1.5),
        Igual("double precision", 0.1),
        Igual("double precision", 1e-300),
        Igual("double precision", std::numeric_limits<double>::max(), false),
        Igual("date", DataDe(1, 1, 1)),
        Igual("date", DataDe(1858, 11, 16)),
        Igual("date", DataDe(9999, 12, 31)),
        Igual("time", Hora(23, 59, 59, 9'999'000)),
        Igual("timestamp", TDataHora{DataDe(1, 1, 1), Hora(0, 0, 0, 0)}),
        Igual("timestamp", TDataHora{DataDe(2024, 2, 29), Hora(13, 14, 15, 1'234'000)}, false),
        Igual("boolean", true),
        Igual("boolean", false),
        Igual("varchar(20)", ""),
        Igual("varchar(20)", " ação e €uro  "),
        Igual("char(20)", "ação"),
        Igual("varchar(8) character set octets", TBytes{std::string("\0\xFF '\n", 5)}),
        Igual("blob sub_type 1", "ação\r\n"),
        Igual("blob sub_type 0", TBytes{std::string("\0\xFF\xFE", 3)}),
        Igual("blob sub_type 0", TBytes{}),
    };
    for (const auto& caso : casos) {
        if ((!Completo() && !caso.neutro) || Tipo(caso.tipo).empty()) continue;
        SCOPED_TRACE(std::string(caso.tipo) + " " + caso.entra.ComoTexto());
        TColuna coluna(Conexao(), Tipo(caso.tipo));
        coluna.Grava(caso.entra);
        auto lido = coluna.Le();
        ASSERT_FALSE(lido.Nulo());
        if (const auto* conteudo = lido.Se<std::shared_ptr<const TConteudo>>()) lido = TBytes{(*conteudo)->Tudo()};
        const bool texto = lido.Se<TBytes>() && caso.sai.Se<std::string>();
        EXPECT_EQ(lido, texto ? TValor(TBytes{caso.sai.ComoTexto()}) : caso.sai) << lido.ComoTexto();
    }
    TColuna coluna(Conexao(), Tipo("double precision"));
    coluna.Grava(-0.0);
    EXPECT_TRUE(!Completo() || std::signbit(coluna.Le().ComoDouble()));
}

TEST_P(ContratoDriver, AValueOfAnotherTypeIsTurnedIntoTheColumns) {
    const TCaso casos[] = {
        {"integer", "12", 12},
        {"integer", TDecimal{1200, 2}, 12},
        {"integer", 12.0, 12},
        {"numeric(9,2)", "1,5", TDecimal{150, 2}},
        {"numeric(9,2)", -3, TDecimal{-300, 2}},
        {"numeric(9,2)", 0.1 + 0.2, TDecimal{30, 2}},
        {"double precision", TDecimal{15, 1}, 1.5},
        {"double precision", "1e-3", 0.001},
        {"date", TDataHora{DataDe(2024, 2, 29), {}}, DataDe(2024, 2, 29)},
        {"date", "2024-02-29", DataDe(2024, 2, 29)},
        {"timestamp", DataDe(2024, 2, 29), TDataHora{DataDe(2024, 2, 29), {}}},
        {"timestamp", "2024-02-29 13:14:15.1234", TDataHora{DataDe(2024, 2, 29), Hora(13, 14, 15, 1'234'000)}, false},
        {"boolean", 1, true},
        {"varchar(30)", 12, "12"},
        {"varchar(30)", 0.1, "0.1"},
        {"varchar(30)", TDataHora{DataDe(2024, 2, 29), Hora(1, 2, 3, 0)}, "2024-02-29 01:02:03"},
        {"integer", "", {}},
        {"timestamp", "", {}},
    };
    for (const auto& caso : casos) {
        if ((!Completo() && !caso.neutro) || Tipo(caso.tipo).empty()) continue;
        SCOPED_TRACE(std::string(caso.tipo) + " " + caso.entra.ComoTexto());
        TColuna coluna(Conexao(), Tipo(caso.tipo));
        coluna.Grava(caso.entra);
        const auto lido = coluna.Le();
        EXPECT_EQ(lido, caso.sai) << lido.ComoTexto();
    }
}

TEST_P(ContratoDriver, AValueThatDoesNotFitIsRefusedAndLeavesNoRow) {
    const TCaso casos[] = {
        {"smallint", 32768, {}},
        {"integer", "abc", {}},
        {"integer", 1.5, {}},
        {"bigint", 1e19, {}},
        {"numeric(9,2)", "1.234", {}},
        {"numeric(9,2)", 0.001, {}},
        {"numeric(18,4)", 1e15, {}},
        {"double precision", TInteiro::max(), {}},
        {"float", 1e300, {}, false},
        {"date", "29/30/2024", {}},
        {"date", DataDe(10000, 1, 1), {}},
        {"varchar(3)", "abcd", {}, false},
        {"varchar(3)", "açãõ", {}, false},
    };
    for (const auto& caso : casos) {
        if ((!Completo() && !caso.neutro) || Tipo(caso.tipo).empty()) continue;
        SCOPED_TRACE(std::string(caso.tipo) + " " + caso.entra.ComoTexto());
        TColuna coluna(Conexao(), Tipo(caso.tipo));
        EXPECT_TRUE(Recusa([&] { coluna.Grava(caso.entra); })) << coluna.Le().ComoTexto();
        EXPECT_EQ(coluna.Le(), TValor("no row"));
    }
}

TEST_P(ContratoDriver, ParametersStandOutsideQuotesAndCommentsOnly) {
    Executa("create table T (A integer, B varchar(20))");
    auto comando = Conexao().Prepara(
        "insert into T (A, B) /* :nada */ select :pA + 1, ':pA' from T where A = :pa -- :nada\n and B = :pB");
    EXPECT_EQ(comando->Parametros(), (std::vector<std::string>{"pA", "pB"}));
    Executa("insert into T values (4, 'x')");
    comando->Atribui("pA", 4);
    comando->Atribui("pb", "x");
    EXPECT_EQ(comando->Executa(), 1);
    EXPECT_EQ(Linhas("select A, B from T order by A"), "4|x,5|:pA");
    EXPECT_THROW(comando->Atribui("nada", 1), std::invalid_argument);
}

TEST_P(ContratoDriver, AStatementStoresWhatItWasGivenLastWhateverItHadBefore) {
    Executa("create table T (N integer, R " + Tipo("double precision") + ", D " + Tipo("date") + ", S " +
            Tipo("varchar(200)") + ", M " + Tipo("blob sub_type 1") + ", B " + Tipo("blob sub_type 0") + ")");
    const std::string longo(100'000, 'x'), cedilha = "ção";
    const std::vector<TLinha> linhas = {
        {TValor(), TValor(), TValor(), TValor(), TValor(), TValor()},
        {1, 0.5, DataDe(1999, 1, 2), cedilha, cedilha, TBytes{"b"}},
        {2, TValor(), TValor(), std::string(200, 'y'), longo, TBytes{longo}},
        {3, -1e9, DataDe(1500, 3, 4), "", TValor(), TBytes{}},
        {TValor(), 2.0, DataDe(2001, 5, 6), "z", "curto", TBytes{std::string(9000, '\0')}},
        {5, TValor(), TValor(), TValor(), longo + cedilha, TValor()},
        {6, 3.0, DataDe(2002, 7, 8), cedilha, "fim", TBytes{"fim"}},
    };
    const auto insere = Conexao().Prepara("insert into T (N, R, D, S, M, B) values (:n, :r, :d, :s, :m, :b)");
    const auto le = Conexao().Prepara("select N, R, D, S, M, B from T");
    for (std::size_t i = 0; i < linhas.size(); ++i) {
        SCOPED_TRACE(i);
        Executa("delete from T");
        for (std::size_t campo = 0; campo < linhas[i].size(); ++campo) insere->Atribui(campo, linhas[i][campo]);
        ASSERT_EQ(insere->Executa(), 1);
        le->Abre();
        ASSERT_TRUE(le->Proximo());
        for (std::size_t campo = 0; campo < linhas[i].size(); ++campo) {
            const TValor lido = le->Valor(campo);
            EXPECT_EQ(lido.Nulo(), linhas[i][campo].Nulo()) << campo;
            EXPECT_EQ(lido.ComoTexto(), linhas[i][campo].ComoTexto()) << campo;
        }
        le->Fecha();
    }
}

TEST_P(ContratoDriver, ExecutedStatementsTellHowManyRowsTheyTouched) {
    Executa("create table T (A integer)");
    for (int i = 1; i <= 3; ++i) Executa("insert into T values (" + std::to_string(i) + ")");
    EXPECT_EQ(Conexao().Prepara("insert into T select A + 10 from T")->Executa(), 3);
    EXPECT_EQ(Conexao().Prepara("update T set A = A + 1 where A > 10")->Executa(), 3);
    EXPECT_EQ(Conexao().Prepara("delete from T where A < 0")->Executa(), 0);
    EXPECT_EQ(Conexao().Prepara("delete from T")->Executa(), 6);
}

}  // namespace
}  // namespace wkd
