#ifdef _WIN32
#include <windows.h>

#include <aclapi.h>
#include <sddl.h>
#else
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <optional>

#include "PacotesDeTeste.h"
#include "package/Trava.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;

#ifdef _WIN32
/// Nobody is let in but the user, the system and the administrators, whatever holds for the folder above.
bool SoDoUsuario(const fs::path& caminho) {
    PSECURITY_DESCRIPTOR descritor = nullptr;
    wchar_t* regra = nullptr;
    if (GetNamedSecurityInfoW(caminho.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, nullptr,
                              nullptr, &descritor) != ERROR_SUCCESS)
        return false;
    ConvertSecurityDescriptorToStringSecurityDescriptorW(descritor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &regra,
                                                         nullptr);
    const std::wstring texto = regra ? regra : L";;;WD)";
    LocalFree(regra);
    LocalFree(descritor);
    const auto alheios = {L";;;WD)", L";;;BU)", L";;;AU)", L";;;IU)"};  // everyone, users, whoever signed in
    return std::ranges::none_of(alheios, [&](const wchar_t* quem) { return texto.find(quem) != std::wstring::npos; });
}
#else
bool SoDoUsuario(const fs::path& caminho) {
    struct stat estado {};
    return stat(caminho.c_str(), &estado) == 0 && (estado.st_mode & 07077u) == 0 && (estado.st_mode & 0600u) == 0600u;
}
#endif

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
        EXPECT_TRUE(SoDoUsuario(nome));
#ifndef _WIN32  // there the lock is in the user's own temporary folder
        EXPECT_TRUE(SoDoUsuario(trava));
#endif
    }
    EXPECT_TRUE(fs::is_empty(temp.Caminho()));
}

#ifndef _WIN32
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

#endif

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

TEST_F(PastaDeTrabalhoTest, ALockIsOneHoldersWhoSaysWhoHeIs) {
    EXPECT_EQ(TTrava::QuemTem(trava), std::nullopt);
    auto nossa = TTrava::Tenta(trava);
    ASSERT_TRUE(nossa);
    nossa->Escreve("antes, e mais longo");
    nossa->Escreve("João");
    EXPECT_EQ(TTrava::Tenta(trava), nullptr);
    EXPECT_EQ(TTrava::QuemTem(trava), "João");
    nossa.reset();
    EXPECT_FALSE(fs::exists(trava));
    EXPECT_TRUE(TTrava::Tenta(trava));
}

TEST_F(PastaDeTrabalhoTest, ANameThatIsAFilesIsRefused) {
    EscreveArquivo(nome, "arquivo");
    EXPECT_TRUE(Contem(Erro(), "não é uma pasta")) << Erro();
    EXPECT_EQ(LeArquivo(nome), "arquivo");
}

#ifndef _WIN32
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

#endif

TEST_F(PastaDeTrabalhoTest, FindsFilesWhateverTheirLetterCase) {
    const TPastaDeTrabalho trabalho(temp.Caminho());
    for (const auto* arquivo : {"sistema.wkd", "SAtrib.WKD", "Abc.Wkd", "rel.rtm", "semextensao", "x.wkd.bak"})
        EscreveArquivo(nome / arquivo, "");
    fs::create_directory(nome / "pasta.wkd");
    std::vector<std::string> nomes;
    for (const auto& arquivo : trabalho.Arquivos(".wkd")) nomes.push_back(arquivo.filename().string());
    EXPECT_EQ(nomes, (std::vector<std::string>{"Abc.Wkd", "SAtrib.WKD", "sistema.wkd"}));
    EXPECT_EQ(trabalho.Arquivo("SATRIB.wkd").filename(), "SAtrib.WKD");
    EXPECT_TRUE(trabalho.Arquivo("SARQUIVO.WKD").empty());
}

}  // namespace
}  // namespace wkd
