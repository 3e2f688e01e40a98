#include <gtest/gtest.h>

#include "ConexaoGravada.h"
#include "rows/ClientDataSet.h"

namespace wkd {
namespace {

using TPedidos = std::vector<std::string>;

/// Stored columns of a table; K1 and K2 find the row again.
class AplicaAlteracoes : public testing::Test {
  protected:
    AplicaAlteracoes() {
        conexao.resposta.campos = {
            {.nome = "K1"}, {.nome = "K2"}, {.nome = "V"}, {.nome = "B", .tipo = TTipoDado::Blob}};
        conexao.resposta.linhas = {
            {"a", "1", "x", TBytes{"blob"}}, {"b", TValor(), "y", TValor()}, {"c", "3", TValor(), TValor()}};
        dados.SetProvedor({&conexao, "select * from T", "T", {"K1", "K2"}});
        dados.OnReconcileError = [this](const TErro& erro) {
            erros.push_back(erro.mensagem);
            return acao;
        };
        dados.Open();
        conexao.preparados = 0;
    }

    void Muda(const char* chave, const char* campo, const TValor& valor) {
        ASSERT_TRUE(dados.Locate("K1", {chave}));
        dados.Edit();
        dados.SetValor(campo, valor);
        dados.Post();
    }
    void Inclui(const TValor& k1, const TValor& k2) {
        dados.Append();
        dados.SetValor("K1", k1);
        dados.SetValor("K2", k2);
        dados.Post();
    }
    void Exclui(const char* chave) {
        ASSERT_TRUE(dados.Locate("K1", {chave}));
        dados.Delete();
    }

    TConexaoGravada conexao;
    TClientDataSet dados;
    TPedidos erros;
    TAcaoReconcilia acao = TAcaoReconcilia::Pula;
};

TEST_F(AplicaAlteracoes, SendsWhatChangedAloneInTheOrderOfTheChanges) {
    Muda("b", "V", "novo");
    Exclui("c");
    Inclui("c", "3");
    Muda("a", "K2", "9");
    Muda("a", "V", TValor());
    EXPECT_EQ(dados.ChangeCount(), 4u);
    EXPECT_EQ(dados.ApplyUpdates(0), 0);
    EXPECT_EQ(conexao.pedidos, (TPedidos{"update T set V = :p1 where K1 = :p2 and K2 is null [novo|b]",
                                         "delete from T where K1 = :p1 and K2 = :p2 [c|3]",
                                         "insert into T (K1, K2) values (:p1, :p2) [c|3]",
                                         "update T set K2 = :p1, V = :p2 where K1 = :p3 and K2 = :p4 [9||a|1]"}));
    EXPECT_EQ(dados.ChangeCount(), 0u);
    EXPECT_EQ(dados.ApplyUpdates(0), 0);
    EXPECT_EQ(conexao.pedidos.size(), 4u) << "o que foi enviado não vai de novo";
}

TEST_F(AplicaAlteracoes, ARowWrittenBackUnchangedSendsNothing) {
    Muda("a", "V", "x");
    Muda("a", "B", "blob");
    Muda("b", "V", "z");
    Muda("b", "V", "y");
    Inclui("d", "4");
    Muda("d", "V", "w");
    Exclui("d");
    EXPECT_EQ(dados.ChangeCount(), 0u);
    EXPECT_TRUE(AplicaEmTransacao(dados));
    EXPECT_TRUE(conexao.pedidos.empty());
}

TEST_F(AplicaAlteracoes, PreparesOnceForEachShape) {
    for (int i = 0; i < 50; ++i) Inclui(std::to_string(i), i % 2 ? TValor("x") : TValor());
    EXPECT_EQ(dados.ApplyUpdates(0), 0);
    EXPECT_EQ(conexao.pedidos.size(), 50u);
    EXPECT_EQ(conexao.preparados, 2u);
}

TEST_F(AplicaAlteracoes, ARowThatIsGoneIsAnError) {
    conexao.aoExecutar = [](const std::string&) { return 0; };
    Muda("a", "V", "novo");
    Exclui("c");
    EXPECT_EQ(dados.ApplyUpdates(-1), 2);
    ASSERT_EQ(erros.size(), 2u);
    EXPECT_NE(erros[0].find("registro não encontrado ou alterado por outro usuário"), std::string::npos);
    EXPECT_EQ(dados.ChangeCount(), 2u) << "depois de um erro tudo continua pendente";
}

TEST_F(AplicaAlteracoes, RowsOfOneKeyGoWithTheFirstDeletion) {
    conexao.resposta.linhas = {{"a", "1"}, {"a", "1"}, {"b", "2"}};
    for (auto& linha : conexao.resposta.linhas) linha.resize(4);
    dados.Open();
    int vez = 0;
    conexao.aoExecutar = [&](const std::string&) { return ++vez == 1 ? 2 : 0; };
    Exclui("a");
    Exclui("a");
    Exclui("b");
    EXPECT_EQ(dados.ApplyUpdates(-1), 1) << "só a de b falta";
}

TEST_F(AplicaAlteracoes, TheActionDecidesWhatFollowsAnError) {
    struct TCaso {
        TAcaoReconcilia acao;
        int maximo;
        std::size_t enviados, pendentes;
    };
    for (const TCaso& caso : {TCaso{TAcaoReconcilia::Pula, 0, 1, 3}, TCaso{TAcaoReconcilia::Pula, 1, 2, 3},
                              TCaso{TAcaoReconcilia::Pula, -1, 3, 3}, TCaso{TAcaoReconcilia::Aborta, -1, 1, 3},
                              TCaso{TAcaoReconcilia::Cancela, -1, 3, 0}}) {
        dados.Open();
        conexao.pedidos.clear();
        acao = caso.acao;
        conexao.aoExecutar = [](const std::string&) -> std::int64_t { throw TConexaoGravada::Erro("recusado"); };
        Muda("a", "V", "1");
        Muda("b", "V", "1");
        Inclui("d", "4");
        EXPECT_EQ(dados.ApplyUpdates(caso.maximo), static_cast<int>(caso.enviados));
        EXPECT_EQ(conexao.pedidos.size(), caso.enviados);
        EXPECT_EQ(dados.ChangeCount(), caso.pendentes);
    }
}

TEST_F(AplicaAlteracoes, InATransactionWritesAllOrNothing) {
    Muda("a", "V", "1");
    EXPECT_TRUE(AplicaEmTransacao(dados));
    EXPECT_EQ(conexao.pedidos.front(), "start");
    EXPECT_EQ(conexao.pedidos.back(), "commit");

    for (bool noCommit : {false, true}) {
        conexao.pedidos.clear();
        erros.clear();
        conexao.commitFalha = noCommit;
        conexao.aoExecutar = [&](const std::string& sql) -> std::int64_t {
            if (!noCommit && sql.starts_with("insert")) throw TConexaoGravada::Erro("recusado");
            return 1;
        };
        Muda("b", "V", "2");
        Exclui("c");
        Inclui("d", "4");
        EXPECT_FALSE(AplicaEmTransacao(dados));
        EXPECT_EQ(conexao.pedidos.back(), "rollback");
        EXPECT_EQ(erros, TPedidos{noCommit ? "commit recusado" : "recusado"});
        EXPECT_EQ(dados.ChangeCount(), 0u);
        EXPECT_EQ(dados.RecordCount(), 3u);
        EXPECT_TRUE(dados.Existe("K1;V", {"b", "y"}) && dados.Existe("K1", {"c"}) && !dados.Existe("K1", {"d"}));
        EXPECT_TRUE(dados.Existe("K1;V", {"a", "1"})) << "o que já estava gravado fica";
    }
}

TEST_F(AplicaAlteracoes, ALoopThatWritesRowByRowPassesTheOneThatFails) {
    conexao.aoExecutar = [](const std::string& sql) -> std::int64_t {
        if (sql.find("|b]") != std::string::npos) throw TConexaoGravada::Erro("recusado");
        return 1;
    };
    std::string gravadas;
    int voltas = 0;
    for (dados.First(); !dados.Eof() && voltas < 9; dados.Next(), ++voltas) {
        dados.Edit();
        dados.SetValor("V", "nova");
        dados.Post();
        gravadas += AplicaEmTransacao(dados) ? dados.Texto("K1") : "-";
    }
    EXPECT_EQ(gravadas, "a-c");
}

TEST_F(AplicaAlteracoes, AnErrorNotOfTheDatabaseRollsBackAndPassesOn) {
    conexao.aoExecutar = [](const std::string&) -> std::int64_t { throw std::runtime_error("fim do processo"); };
    Muda("a", "V", "1");
    EXPECT_THROW(AplicaEmTransacao(dados), std::runtime_error);
    EXPECT_EQ(conexao.pedidos.back(), "rollback");
}

}  // namespace
}  // namespace wkd
