#include "copy/Rejeitados.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "Arquivos.h"
#include "ModuloTemporario.h"
#include "OpcoesDeTeste.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;

class RejeitadosTest : public testing::Test {
  protected:
    bool Rejeita(const char* valor) {
        return TRejeitados(ctx_, "TCLI", "Restaurar").Valor({{"CODIGO", 1}}, "longo", "NOME", valor);
    }

    TModuloTemporario modulo_;
    const TOpcoes opcoes_ = OpcoesDeTeste(modulo_.Pasta());
    TEstado estado_;
    TContexto ctx_{modulo_.Modulo(), opcoes_, estado_, {}, {}};
    const fs::path arquivo_ = modulo_.Pasta() / "AtualizaWKD.rejeitados.jsonl";
};

TEST_F(RejeitadosTest, ALineCutInTheMiddleDoesNotSwallowTheNextRow) {
    EscreveArquivo(arquivo_, "{\"tabela\": \"TVEL");
    EXPECT_TRUE(Rejeita("a"));
    EXPECT_TRUE(Rejeita("b"));
    const std::string registro =
        "{\"alias\": \"LOJA\", \"tabela\": \"TCLI\", \"etapa\": \"Restaurar\", \"chave\": {\"CODIGO\": 1}, \"erro\": "
        "\"longo\", \"campo\": "
        "\"NOME\", \"valor\": ";
    EXPECT_EQ(LeArquivo(arquivo_), "{\"tabela\": \"TVEL\n" + registro + "\"a\"}\n" + registro + "\"b\"}\n");
}

TEST_F(RejeitadosTest, TheFileIsItsOwnersAlone) {
#ifdef _WIN32
    GTEST_SKIP() << "files inherit the rights of their folder on Windows";
#endif
    const auto soDoDono = fs::perms::owner_read | fs::perms::owner_write;
    EXPECT_TRUE(Rejeita("a"));
    EXPECT_EQ(fs::status(arquivo_).permissions(), soDoDono);
    fs::permissions(arquivo_, fs::perms(0644));
    EXPECT_TRUE(Rejeita("b"));
    EXPECT_EQ(fs::status(arquivo_).permissions(), soDoDono);
}

TEST_F(RejeitadosTest, DoesNotWriteThroughAnotherName) {
#ifdef _WIN32
    GTEST_SKIP() << "the standard library makes no links on Windows";
#endif
    const fs::path alheio = modulo_.Pasta() / "alheio";
    EscreveArquivo(alheio, "intacto");
    for (auto* liga : {+[](const fs::path&de, const fs::path&para) { fs::create_symlink(de, para); },
                       +[](const fs::path&de, const fs::path&para) { fs::create_hard_link(de, para); }}) {
        fs::remove(arquivo_);
        liga(alheio, arquivo_);
        EXPECT_FALSE(Rejeita("a"));
        EXPECT_EQ(LeArquivo(alheio), "intacto");
    }
    EXPECT_TRUE(TTelaDeTeste::Contem(modulo_.Tela().memo2, "rejeitados.jsonl"));
}

}  // namespace
}  // namespace wkd
