#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <optional>

#include "PacotesDeTeste.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;

class PastaDeTrabalhoTest : public testing::Test {
  protected:
    /// What the working directory is refused with; empty when it can be had.
    std::string Erro() const {
        try {
            TPastaDeTrabalho trabalho(temp.Caminho());
            return {};
        } catch (const TErroPacote& erro) {
            return erro.what();
        }
    }

    TPastaTemporaria temp;
    fs::path nome = temp / "AtualWkd";
    fs::path trava = temp / "AtualWkd.lock";
};

TEST_F(PastaDeTrabalhoTest, IsTheUsersAloneAndLeavesNothingBehind) {
    fs::create_directories(nome / "velha");
    EscreveArquivo(nome / "velha/SISTEMA.WKD", "da atualização anterior");
    {
        TPastaDeTrabalho trabalho(temp.Caminho());
        EXPECT_TRUE(fs::is_empty(trabalho.Caminho()));
        struct stat estado {};
        ASSERT_EQ(stat(nome.c_str(), &estado), 0);
        EXPECT_EQ(estado.st_mode & 07777u, 0700u);
        ASSERT_EQ(stat(trava.c_str(), &estado), 0);
        EXPECT_EQ(estado.st_mode & 07777u, 0600u);
    }
    EXPECT_TRUE(fs::is_empty(temp.Caminho()));
}

TEST_F(PastaDeTrabalhoTest, MakingItAnewFollowsNoLinks) {
    fs::create_directory(temp / "alheia");
    EscreveArquivo(temp / "alheia/arquivo", "intacto");
    TPastaDeTrabalho trabalho(temp.Caminho());
    fs::create_directory_symlink(temp / "alheia", nome / "link");
    EscreveArquivo(nome / "A.WKD", "a");
    trabalho.Recria();
    EXPECT_TRUE(fs::is_empty(nome));
    EXPECT_EQ(LeArquivo(temp / "alheia/arquivo"), "intacto");
}

TEST_F(PastaDeTrabalhoTest, EachRunHasItsOwnAndTheFirstFreeServesAgain) {
    auto primeira = std::make_unique<TPastaDeTrabalho>(temp.Caminho());
    const TPastaDeTrabalho segunda(temp.Caminho()), terceira(temp.Caminho());
    EXPECT_EQ(primeira->Caminho(), nome);
    EXPECT_EQ(segunda.Caminho(), temp / "AtualWkd2");
    EXPECT_EQ(terceira.Caminho(), temp / "AtualWkd3");
    EscreveArquivo(segunda.Caminho() / "SISTEMA.WKD", "da segunda");
    primeira.reset();
    EXPECT_EQ(TPastaDeTrabalho(temp.Caminho()).Caminho(), nome);
    EXPECT_EQ(LeArquivo(temp / "AtualWkd2/SISTEMA.WKD"), "da segunda");
}

TEST_F(PastaDeTrabalhoTest, TheLockOfADeadProcessDoesNotHinderTheNext) {
    const pid_t filho = fork();
    if (filho == 0) {
        const TPastaDeTrabalho trabalho(temp.Caminho());
        _exit(fs::exists(trava) ? 0 : 1);  // without destructors, like a crash
    }
    int estado = 0;
    ASSERT_EQ(waitpid(filho, &estado, 0), filho);
    ASSERT_EQ(estado, 0);
    EXPECT_TRUE(fs::exists(trava));
    EXPECT_EQ(Erro(), "");
}

TEST_F(PastaDeTrabalhoTest, TakenNamesAreRefusedAndNotFollowed) {
    const fs::path alvo = temp / "alvo";
    fs::create_directory(alvo);
    EscreveArquivo(alvo / "arquivo", "intacto");
    const auto recusa = [&](std::string_view causa) {
        const auto erro = Erro();
        EXPECT_TRUE(Contem(erro, causa)) << erro;
        EXPECT_EQ(LeArquivo(alvo / "arquivo"), "intacto");
        fs::remove_all(nome);
        fs::remove_all(trava);
    };
    fs::create_directory_symlink(alvo, nome);
    recusa("é um link");
    EscreveArquivo(nome, "arquivo");
    recusa("não é uma pasta");
    fs::create_symlink(alvo / "arquivo", trava);
    recusa("de um link");
    fs::create_directory(trava);
    recusa("AtualWkd.lock");
    ASSERT_EQ(mkfifo(trava.c_str(), 0600), 0);
    recusa("arquivo comum");
    if (geteuid() != 0) return;  // only root can give files away
    fs::create_directory(nome);
    ASSERT_EQ(chown(nome.c_str(), 12345, 12345), 0);
    recusa("pertence a outro usuário");
    EscreveArquivo(trava, "");
    ASSERT_EQ(chown(trava.c_str(), 12345, 12345), 0);
    recusa("pertence");
}

TEST_F(PastaDeTrabalhoTest, FindsFilesWhateverTheirLetterCase) {
    const TPastaDeTrabalho trabalho(temp.Caminho());
    for (const auto* arquivo : {"sistema.wkd", "SAtrib.WKD", "Abc.Wkd", "rel.rtm", "semextensao", "x.wkd.bak"})
        EscreveArquivo(nome / arquivo, "");
    fs::create_directory(nome / "pasta.wkd");
    std::vector<std::string> nomes;
    for (const auto& arquivo : trabalho.Arquivos(".wkd")) nomes.push_back(arquivo.filename());
    EXPECT_EQ(nomes, (std::vector<std::string>{"Abc.Wkd", "SAtrib.WKD", "sistema.wkd"}));
    EXPECT_EQ(trabalho.Arquivo("SATRIB.wkd").filename(), "SAtrib.WKD");
    EXPECT_TRUE(trabalho.Arquivo("SARQUIVO.WKD").empty());
}

}  // namespace
}  // namespace wkd
