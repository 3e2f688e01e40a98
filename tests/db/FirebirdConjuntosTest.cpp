#include <gtest/gtest.h>

#include "BancoTemporario.h"
#include "firebird/ConexaoFirebird.h"
#include "values/Erros.h"

namespace wkd {
namespace {

/// Columns of every character set, as text, fixed text and memo.
constexpr const char* kConjuntos[] = {"NONE", "WIN1252", "ISO8859_1", "UTF8"};

std::string Tabela() {
    std::string sql = "create table T (A integer";
    for (const std::string conjunto : kConjuntos)
        sql += ", V_" + conjunto + " varchar(20) character set " + conjunto + ", C_" + conjunto +
               " char(20) character set " + conjunto + ", M_" + conjunto + " blob sub_type 1 character set " + conjunto;
    return sql + ")";
}

TValor Um(TConnection& conexao, const std::string& sql) {
    auto comando = conexao.Prepara(sql);
    comando->Abre();
    return comando->Proximo() ? comando->Valor(0) : TValor("no row");
}

void Grava(TConnection& conexao, const std::string& coluna, const TValor& valor) {
    conexao.ExecuteDirect("delete from T");
    auto insere = conexao.Prepara("insert into T (" + coluna + ") values (:pTexto)");
    insere->Atribui("pTexto", valor);
    insere->Executa();
}

struct TConexaoDe {
    const char* banco;    // default character set of the database
    const char* conexao;  // "CharacterSet", empty without one
};

void PrintTo(const TConexaoDe& caso, std::ostream* saida) { *saida << caso.banco << " over " << caso.conexao; }

class FirebirdConjuntos : public testing::TestWithParam<TConexaoDe> {
  protected:
    FirebirdConjuntos() : banco_(GetParam().banco) {
        auto parametros = banco_.Parametros();
        if (*GetParam().conexao) parametros.Adiciona("CharacterSet", GetParam().conexao);
        conexao_ = CriaConexaoFirebird(parametros);
        conexao_->Open();
        conexao_->ExecuteDirect(Tabela());
    }

    TBancoTemporario banco_;
    std::unique_ptr<TConnection> conexao_;
};

INSTANTIATE_TEST_SUITE_P(Bancos, FirebirdConjuntos,
                         testing::Values(TConexaoDe{"", ""}, TConexaoDe{"WIN1252", ""}, TConexaoDe{"ISO8859_1", ""},
                                         TConexaoDe{"UTF8", ""}, TConexaoDe{"UTF8", "WIN1252"},
                                         TConexaoDe{"", "ISO8859_1"}, TConexaoDe{"", "NONE"}),
                         [](const auto& caso) {
                             return std::string("Banco") + caso.param.banco + "Conexao" + caso.param.conexao;
                         });

TEST_P(FirebirdConjuntos, AccentsAreTheSameLettersInEveryColumn) {
    const std::string texto = "ação É õ";
    for (const std::string conjunto : kConjuntos) {
        const auto bytes = conjunto == "UTF8" ? texto.size() : texto.size() - 4;
        for (const std::string especie : {"V_", "C_", "M_"}) {
            const auto coluna = especie + conjunto;
            SCOPED_TRACE(coluna);
            Grava(*conexao_, coluna, texto);
            EXPECT_EQ(Um(*conexao_, "select " + coluna + " from T").ComoTexto(), texto);
            EXPECT_EQ(Um(*conexao_, "select octet_length(trim(" + coluna + ")) from T").ComoInteiro(),
                      static_cast<std::int64_t>(bytes));
        }
        auto procura = conexao_->Prepara("select count(*) from T where V_" + conjunto + " = :pTexto");
        Grava(*conexao_, "V_" + conjunto, texto);
        procura->Atribui("pTexto", texto);
        procura->Abre();
        ASSERT_TRUE(procura->Proximo());
        EXPECT_EQ(procura->Valor(0).ComoInteiro(), 1);
    }
}

TEST_P(FirebirdConjuntos, ALetterThatAColumnCannotHoldIsAnErrorAndNoQuestionMark) {
    for (const std::string coluna : {"V_NONE", "M_NONE", "V_WIN1252", "M_WIN1252", "V_ISO8859_1", "M_ISO8859_1"}) {
        SCOPED_TRACE(coluna);
        EXPECT_ANY_THROW(Grava(*conexao_, coluna, "Ω"));
        EXPECT_EQ(Um(*conexao_, "select " + coluna + " from T"), TValor("no row"));
    }
}

TEST(FirebirdConjuntosTest, LongMemosOfAnotherSetSurviveTheirTransaction) {
    TBancoTemporario banco("WIN1252");
    auto& conexao = banco.Conexao();
    conexao.ExecuteDirect(Tabela());
    std::string texto;
    while (texto.size() < (3u << 20)) texto += "ação ";
    for (const std::string coluna : {"M_WIN1252", "M_NONE", "M_UTF8"}) {
        Grava(conexao, coluna, texto);
        const auto valor = Um(conexao, "select " + coluna + " from T");
        ASSERT_TRUE(valor.Se<std::shared_ptr<const TConteudo>>());
        EXPECT_TRUE(valor.ComoTexto() == texto) << coluna;
        conexao.ExecuteDirect("update T set A = 1");
        auto muda = conexao.Prepara("update T set M_ISO8859_1 = :pM");
        muda->Atribui("pM", valor);
        muda->Executa();
        EXPECT_TRUE(Um(conexao, "select M_ISO8859_1 from T").ComoTexto() == texto) << coluna;
    }
}

}  // namespace
}  // namespace wkd
