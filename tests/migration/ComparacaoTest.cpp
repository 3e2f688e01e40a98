#include "decision/Comparacao.h"

#include <gtest/gtest.h>

#include <optional>

namespace wkd {
namespace {

TColunaDicionario Coluna(std::string tipo, std::string tamanho = "0", int chave = 0, std::string padrao = "") {
    TColunaDicionario coluna;
    coluna.nome = "C";
    coluna.tipo = std::move(tipo);
    coluna.tamanho = std::move(tamanho);
    coluna.chave = chave;
    coluna.valorPadrao = std::move(padrao);
    return coluna;
}

TColunaFisica Fisica(TTipoDado tipo, int tamanho = 0) {
    TColunaFisica coluna;
    coluna.nome = "C";
    coluna.tipo = tipo;
    coluna.tamanho = tamanho;
    return coluna;
}

/// Of the table T, whose stored column is that one, if any.
TDecisaoDaColuna Compara(const TColunaDicionario& nova, const std::optional<TColunaDicionario>& velha,
                         const TFatosFisicos& fatos, TTipoBanco banco) {
    return ComparaColuna("T", nova, velha ? &*velha : nullptr, fatos, banco);
}

struct TCaso {
    const char* nome;
    TColunaDicionario nova;
    std::optional<TColunaDicionario> velha;
    std::optional<TColunaFisica> fisica;
    std::vector<std::string> comandos;
    bool reconstroi = false;
};

TEST(ComparaColuna, DecidesToAlterRebuildAddOrNothing) {
    const auto texto = [](int n) { return Fisica(TTipoDado::Texto, n); };
    const TCaso casos[] = {
        {"same text", Coluna("ftString", "40"), Coluna("ftString", "40"), texto(40), {}},
        {"text grows",
         Coluna("ftString", "40"),
         Coluna("ftString", "20"),
         texto(20),
         {"alter table T alter C type  varchar (40)"}},
        {"text shrinks: left alone", Coluna("ftString", "20"), Coluna("ftString", "40"), texto(40), {}},
        {"integer to float",
         Coluna("ftFloat"),
         Coluna("ftInteger"),
         Fisica(TTipoDado::Inteiro),
         {"alter table T alter C type  double Precision "}},
        {"integer to text",
         Coluna("ftString", "10"),
         Coluna("ftInteger"),
         Fisica(TTipoDado::Inteiro),
         {"alter table T alter C type  varchar (10)"}},
        {"text to integer: nothing", Coluna("ftInteger"), Coluna("ftString", "10"), texto(10), {}},
        {"text to blob: the temporary column comes and goes",
         Coluna("ftBlob"),
         Coluna("ftString", "10"),
         texto(10),
         {"alter table T add C_TMP BLOB SUB_TYPE 0 SEGMENT SIZE 80 ", "update  T set C_TMP = C",
          "alter table T drop column C_TMP"}},
        {"blob to text: rebuilt", Coluna("ftString", "10"), Coluna("ftBlob"), Fisica(TTipoDado::Blob), {}, true},
        {"date to timestamp: rebuilt", Coluna("ftDateTime"), Coluna("ftDate"), Fisica(TTipoDado::Data), {}, true},
        {"type differs in letter case alone",
         Coluna("FTSTRING", "10"),
         Coluna("ftString", "10"),
         texto(10),
         {"alter table T alter C type  varchar (10)"}},
        {"enters the key", Coluna("ftString", "10", 1), Coluna("ftString", "10"), texto(10), {}, true},
        {"leaves the key", Coluna("ftString", "10"), Coluna("ftString", "10", 1), texto(10), {}, true},
        {"key column shrinks", Coluna("ftString", "20", 1), Coluna("ftString", "40", 1), texto(40), {}, true},
        {"new column", Coluna("ftInteger", "0", 0, "0"), {}, {}, {"alter table T ADD C  integer default '0'"}},
        {"known but physically missing", Coluna("ftDate"), Coluna("ftDate"), {}, {"alter table T ADD C  Date "}},
        {"physically there but unknown", Coluna("ftDate"), {}, Fisica(TTipoDado::Data), {}},
        {"dictionary already says 40, column still 20: interrupted",
         Coluna("ftString", "40"),
         Coluna("ftString", "40"),
         texto(20),
         {"alter table T alter C type  varchar (40)"}},
        {"dictionary already says float, column still integer",
         Coluna("ftFloat"),
         Coluna("ftFloat"),
         Fisica(TTipoDado::Inteiro),
         {"alter table T alter C type  double Precision "}},
        {"column wider than the dictionary",
         Coluna("ftString", "30"),
         Coluna("ftString", "20"),
         texto(60),
         {"alter table T alter C type  varchar (30)"}},
    };
    for (const TCaso& caso : casos) {
        SCOPED_TRACE(caso.nome);
        const TFatosFisicos fatos{caso.fisica ? &*caso.fisica : nullptr, false};
        const auto decisao = Compara(caso.nova, caso.velha, fatos, TTipoBanco::tbInterbase);
        std::vector<std::string> textos;
        for (const auto& comando : decisao.comandos) textos.push_back(comando.texto);
        if (!caso.reconstroi) {
            EXPECT_EQ(textos, caso.comandos);
        }
        EXPECT_EQ(decisao.reconstroi, caso.reconstroi);
        EXPECT_EQ(decisao.acrescenta, !caso.fisica.has_value());
        EXPECT_EQ(decisao.reconstroi, !decisao.motivo.empty());
    }
}

TEST(ComparaColuna, PreparesWhatToDoWhenTheServerRefuses) {
    const auto fisica = Fisica(TTipoDado::Texto, 10);
    const auto comDefault = Compara(Coluna("ftString", "20", 0, "x"), Coluna("ftString", "10", 0, "x"),
                                    {&fisica, false}, TTipoBanco::tbInterbase);
    ASSERT_EQ(comDefault.comandos.size(), 1u);
    EXPECT_EQ(comDefault.comandos[0].texto, "alter table T alter C type  varchar (20)default 'x'");
    EXPECT_EQ(comDefault.comandos[0].alternativa, "alter table T alter C type  varchar (20)");

    auto obrigatoria = fisica;
    obrigatoria.requerido = true;
    const auto noSqlServer = Compara(Coluna("ftString", "20", 0, "x"), Coluna("ftString", "10"), {&obrigatoria, false},
                                     TTipoBanco::tbSQLServer);
    EXPECT_EQ(noSqlServer.comandos[0].alternativa, "alter table T alter COLUMN C Nvarchar (20) not null ");
    const auto semDefault =
        Compara(Coluna("ftString", "20"), Coluna("ftString", "10"), {&obrigatoria, false}, TTipoBanco::tbSQLServer);
    EXPECT_EQ(semDefault.comandos[0].texto, "alter table T alter COLUMN C Nvarchar (20) not null ")
        << "without it the server makes the column nullable";
    const auto viraBlob =
        Compara(Coluna("ftBlob"), Coluna("ftString", "10"), {&fisica, false}, TTipoBanco::tbSQLServer);
    EXPECT_EQ(viraBlob.comandos[1].alternativa, "update  T set C_TMP = cast(C as varbinary(max))");

    const auto sobrou = Compara(Coluna("ftBlob"), Coluna("ftString", "10"), {&fisica, true}, TTipoBanco::tbInterbase);
    ASSERT_EQ(sobrou.comandos.size(), 2u) << "the temporary column of an interrupted run is used again";
    EXPECT_EQ(sobrou.comandos[1].alternativa, "alter table T drop C_TMP");
}

TEST(MudancaExclusiva, TellsWhatMayChangeWithUsersConnected) {
    struct {
        TColunaDicionario nova, velha;
        bool exclusiva;
    } casos[] = {
        {Coluna("ftString", "80"), Coluna("ftString", "60"), false},
        {Coluna("ftString", "60"), Coluna("ftString", "80"), true},
        {Coluna("ftGUID", "30"), Coluna("ftGUID", "38"), true},
        {Coluna("ftFloat"), Coluna("ftInteger"), false},
        {Coluna("ftFloat"), Coluna("ftString", "9"), true},
        {Coluna("ftCurrency"), Coluna("ftDate"), true},
        {Coluna("ftInteger"), Coluna("ftFloat"), true},
        {Coluna("ftInteger"), Coluna("ftString", "9"), false},
        {Coluna("ftInteger"), Coluna("ftGUID", "38"), false},
        {Coluna("ftString", "9"), Coluna("ftBlob"), true},
        {Coluna("ftBlob"), Coluna("ftString", "9"), false},
        {Coluna("FTSTRING", "9"), Coluna("ftString", "12"), false},
        {Coluna("ftString", "14", 1), Coluna("ftString", "10", 1), true},
        {Coluna("ftString", "10", 1), Coluna("ftString", "10"), true},
        {Coluna("ftInteger", "4", 1), Coluna("ftString", "9", 1), true},
        {Coluna("ftDateTime"), Coluna("ftDate"), false},
    };
    for (const auto& caso : casos)
        EXPECT_EQ(MudancaExclusiva(caso.nova, caso.velha), caso.exclusiva)
            << caso.velha.tipo << "(" << caso.velha.tamanho << ") -> " << caso.nova.tipo << "(" << caso.nova.tamanho
            << ")";
}

}  // namespace
}  // namespace wkd
