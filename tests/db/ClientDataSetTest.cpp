#include "rows/ClientDataSet.h"

#include <gtest/gtest.h>

#include "BancoTemporario.h"
#include "Linhas.h"

namespace wkd {
namespace {

/// A dataset over a real table whose first column's key is padded and may be NULL in the second.
class ClientDataSetNoBanco : public testing::Test {
  protected:
    ClientDataSetNoBanco() {
        conexao.ExecuteDirect(
            "create table T (K char(5) not null, S varchar(10), N numeric(9,2), Q timestamp, B blob, "
            "P varchar(5) default 'pad')");
        conexao.ExecuteDirect("create unique index T_UNICO on T (K, S)");
        conexao.ExecuteDirect("insert into T values ('a', null, 1.50, '2024-01-02 03:04:05.1234', 'texto', 'x')");
        conexao.ExecuteDirect("insert into T values ('b', 'ação', null, null, null, null)");
        dados.SetProvedor({&conexao, "select * from T order by K", "T", {"K", "S"}});
        dados.OnReconcileError = [this](const TErro& recusa) {
            erro = recusa.mensagem;
            return TAcaoReconcilia::Pula;
        };
        dados.Open();
    }

    std::string NoBanco() { return Linhas(conexao, "select K, S, N, B, P from T order by K, S"); }

    TBancoTemporario banco;
    TConnection& conexao = banco.Conexao();
    TClientDataSet dados;
    std::string erro;
};

TEST_F(ClientDataSetNoBanco, ARowWrittenBackWithEqualValuesDoesNotReachTheServer) {
    int comandos = 0;
    conexao.Observa([&](std::string_view) { ++comandos; });
    const TLinha antes = {dados.Valor("N"), dados.Valor("Q")};
    dados.Edit();
    dados.SetValor("N", "1,5");
    dados.SetValor("Q", antes[1].ComoTexto());
    dados.SetValor("B", "texto");
    dados.Post();
    EXPECT_EQ(dados.ChangeCount(), 0u);
    comandos = 0;
    EXPECT_TRUE(AplicaEmTransacao(dados));
    EXPECT_EQ(comandos, 0);
}

TEST_F(ClientDataSetNoBanco, ChangesReachTheServerAndComeBackEqual) {
    const std::string longo(200'000, 'z');
    ASSERT_TRUE(dados.Locate("K", {"A"}));
    dados.Edit();
    dados.SetValor("N", "2,75");
    dados.SetValor("B", longo);
    dados.Post();
    dados.Append();
    dados.SetValor("K", "c");
    dados.SetValor("S", "€");
    dados.Post();
    ASSERT_TRUE(dados.Locate("K;S", {"b", "ação"}));
    dados.Delete();
    ASSERT_TRUE(AplicaEmTransacao(dados)) << erro;
    dados.Open();
    EXPECT_EQ(dados.RecordCount(), 2u);
    EXPECT_TRUE(dados.Valor("N") == TValor(TDecimal{275, 2}));
    EXPECT_EQ(dados.Texto("Q"), "2024-01-02 03:04:05.1234");
    EXPECT_EQ(dados.Valor("B").ComoBytes(), longo);
    ASSERT_TRUE(dados.Locate("K", {"c"}));
    EXPECT_EQ(dados.Texto("S"), "€");
    EXPECT_EQ(dados.Texto("P"), "pad") << "o padrão da tabela vale para o que não foi atribuído";
}

TEST_F(ClientDataSetNoBanco, AServersErrorLeavesNothingHalfDone) {
    const std::string antes = NoBanco();
    dados.Edit();
    dados.SetValor("P", "novo");
    dados.Post();
    dados.Append();
    dados.SetValor("K", "b");
    dados.SetValor("S", "ação");
    dados.Post();
    EXPECT_FALSE(AplicaEmTransacao(dados));
    EXPECT_NE(erro, "");
    EXPECT_EQ(NoBanco(), antes);
    EXPECT_FALSE(conexao.InTransaction());
    conexao.ExecuteDirect("drop table T");
}

TEST_F(ClientDataSetNoBanco, ARowDeletedByAnotherUserIsAnError) {
    banco.Outra()->ExecuteDirect("delete from T where K = 'b'");
    ASSERT_TRUE(dados.Locate("K", {"b"}));
    dados.Edit();
    dados.SetValor("P", "x");
    dados.Post();
    EXPECT_FALSE(AplicaEmTransacao(dados));
    EXPECT_EQ(erro, "T: registro não encontrado ou alterado por outro usuário");
    EXPECT_TRUE(dados.Valor("P").Nulo());
}

}  // namespace
}  // namespace wkd
