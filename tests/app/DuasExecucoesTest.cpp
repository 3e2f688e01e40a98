// Two programs in folders of their own, as on two machines, and one database.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <future>

#include "Linhas.h"
#include "ProgramaApoio.h"
#include "Retrato.h"
#include "ServidorFirebird.h"
#include "package/TravaDoBanco.h"

namespace wkd {
namespace {

/// The alias "LOJA" of this folder names the database of that one, over the server or as a file.
void Aponta(const TProgramaInstalado& daqui, const TProgramaInstalado& dela, const std::string& servidor) {
    TAlias alias;
    alias.nome = "LOJA";
    alias.tipoBanco = "tbInterbase";
    alias.hostname = servidor;
    alias.path = (dela / "").string();
    alias.database = "loja.fdb";
    alias.usuario = "SYSDBA";
    alias.senha = "masterkey";
    TAliases(daqui / "WKD.ini").AdicionaAlias(alias, false);
}

class DuasExecucoes : public testing::TestWithParam<bool> {
  protected:
    void SetUp() override {
        const bool noServidor = GetParam();
        if (noServidor && !TServidorFirebird::Instalado()) GTEST_SKIP() << "no Firebird server installed";
        servidor_ = noServidor ? TServidorFirebird::DoProcesso().Endereco() : "";
        Aponta(loja_, loja_, servidor_);
        Aponta(filial_, loja_, servidor_);
    }

    const TProgramaInstalado loja_, filial_;
    std::string servidor_;
};

TEST_P(DuasExecucoes, TheSecondEndsAtOnceSaysWhoUpdatesAndTouchesNothing) {
    THBNConnection conexao(TAliases(loja_ / "WKD.ini"));
    conexao.SetAlias("LOJA");
    conexao.Open();
    const std::string antes = Retrato(conexao);
    {
        TTravaDoBanco trava(conexao);
        const auto saida = filial_.Atualiza();
        EXPECT_EQ(saida.codigo, 2) << saida.saida << saida.erros;
        char computador[256] = {};
        gethostname(computador, sizeof computador - 1);
        for (const std::string& parte : {std::string("Outra atualização deste banco de dados está em andamento"),
                                         std::string(" em ") + computador, std::string(", desde ")})
            EXPECT_NE(saida.erros.find(parte), std::string::npos) << parte << "\n" << saida.erros;
        EXPECT_FALSE(saida.Diz("Iniciando atualização"));
        const auto plano = filial_.Roda({"--plano", "LOJA", "pacote.zip"});
        EXPECT_TRUE(plano.Diz("em andamento")) << plano.erros;
        EXPECT_EQ(plano.codigo, GetParam() ? 10 : 2) << "a server lets a plan in\n" << plano.erros;
    }
    EXPECT_EQ(Diferencas(antes, Retrato(conexao)), "");
    conexao.Close();
    const auto depois = filial_.Atualiza();
    EXPECT_EQ(depois.codigo, 0) << depois.erros;
}

TEST_P(DuasExecucoes, OfTwoAtOnceOneUpdatesAndTheOtherSpoilsNothing) {
    const TProgramaInstalado sozinha;
    ASSERT_EQ(sozinha.Atualiza().codigo, 0);
    auto outra = std::async(std::launch::async, [&] { return filial_.Atualiza(); });
    const auto daLoja = loja_.Atualiza();
    const auto daFilial = outra.get();
    std::vector<int> codigos{daLoja.codigo, daFilial.codigo};
    std::ranges::sort(codigos);
    EXPECT_EQ(codigos.front(), 0) << daLoja.erros << daFilial.erros;
    EXPECT_TRUE(codigos.back() == 2 || codigos.back() == 3 || codigos.back() == 0) << daLoja.erros << daFilial.erros;
    for (const auto* pasta : {&loja_, &filial_})
        EXPECT_FALSE(std::filesystem::exists(*pasta / "AtualizaWKD.rejeitados.jsonl"));
    EXPECT_EQ(Diferencas(sozinha.Retrato(), loja_.Retrato()), "");
}

INSTANTIATE_TEST_SUITE_P(Firebird, DuasExecucoes, testing::Bool(),
                         [](const auto& caso) { return caso.param ? "NoServidor" : "MotorEmbutido"; });

}  // namespace
}  // namespace wkd
