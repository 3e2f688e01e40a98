#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "Casos.h"
#include "PastaTemporaria.h"

namespace wkd {

namespace {

constexpr int kVezes = 20;

/// Runs a program until its first window is drawn.
void Abre(const std::filesystem::path& programa, std::vector<std::string> ambiente) {
    std::vector<char*> variaveis;
    for (std::string& variavel : ambiente) variaveis.push_back(variavel.data());
    variaveis.push_back(nullptr);
    std::string nome = programa.string();
    char* argumentos[] = {nome.data(), nullptr};
    pid_t processo = 0;
    int estado = 0;
    if (posix_spawn(&processo, nome.c_str(), nullptr, nullptr, argumentos, variaveis.data()) != 0 ||
        waitpid(processo, &estado, 0) != processo || estado != 0)
        throw std::runtime_error(nome + " não mostrou a janela");
}

/// The environment of both programs: this one's, without a display where there is none, and with preferences in a
/// folder of their own. The first of two values counts.
std::vector<std::string> Ambiente(const std::filesystem::path& pasta) {
    std::vector<std::string> ambiente = {"LD_PRELOAD=" WKD_FIM_NO_DESENHO, "HOME=" + pasta.string(),
                                         "XDG_RUNTIME_DIR=" + pasta.string()};
    if (!std::getenv("DISPLAY")) ambiente.push_back("QT_QPA_PLATFORM=offscreen");
    for (char** variavel = environ; *variavel; ++variavel) ambiente.emplace_back(*variavel);
    return ambiente;
}

}  // namespace

std::vector<TMedida> MedeAbertura(TBancada&) {
    const TPastaTemporaria pasta;
    std::filesystem::permissions(pasta.Caminho(), std::filesystem::perms::owner_all);  // a session's folder is private
    const std::filesystem::path programa = pasta / "AtualizaWKD";
    std::filesystem::copy_file(WKD_PROGRAMA, programa);
    std::ofstream(pasta / "WKD.ini") << "[LOJA]\nTipoBanco=tbInterbase\nPath=/\nDataBase=loja.fdb\n";
    const auto ambiente = Ambiente(pasta.Caminho());
    const char* tela = std::getenv("DISPLAY") ? "" : ", sem tela";
    return {Alterna(
        {.trabalho = std::string("do início do programa à janela desenhada") + tela,
         .piso = "uma janela vazia",
         .limite = 1.5},
        kVezes, [&] { Abre(programa, ambiente); }, [&] { Abre(WKD_JANELA_VAZIA, ambiente); })};
}

}  // namespace wkd
