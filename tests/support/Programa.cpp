#include "Programa.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <thread>

#include "Arquivos.h"

namespace wkd {

namespace {

std::string Aspas(const std::string& argumento) {
    std::string texto = "'";
    for (const char c : argumento) texto += c == '\'' ? "'\\''" : std::string(1, c);
    return texto + "'";
}

int Codigo(int estado) { return WIFEXITED(estado) ? WEXITSTATUS(estado) : -WTERMSIG(estado); }

}  // namespace

TSaidaDePrograma RodaPrograma(const std::filesystem::path& programa, const std::vector<std::string>& argumentos,
                              const std::filesystem::path& pasta, std::string_view entrada) {
    EscreveArquivo(pasta / "entrada.txt", entrada);
    std::string comando = "cd " + Aspas(pasta.string()) + " && TMPDIR=tmp " + Aspas(programa.string());
    for (const std::string& argumento : argumentos) comando += " " + Aspas(argumento);
    const int estado = std::system((comando + " <entrada.txt >saida.txt 2>erros.txt").c_str());
    return {Codigo(estado), LeArquivo(pasta / "saida.txt"), LeArquivo(pasta / "erros.txt")};
}

TProgramaEmCurso::TProgramaEmCurso(const std::filesystem::path& programa, const std::vector<std::string>& argumentos,
                                   const std::filesystem::path& pasta, int saida, int erros)
    : processo_(fork()) {
    if (processo_ != 0) return;
    std::vector<std::string> textos{programa.string()};
    textos.insert(textos.end(), argumentos.begin(), argumentos.end());
    std::vector<char*> argv;
    for (std::string& texto : textos) argv.push_back(texto.data());
    argv.push_back(nullptr);
    const auto abre = [](const char* nome) { return open(nome, O_WRONLY | O_CREAT | O_TRUNC, 0600); };
    if (chdir(pasta.c_str()) != 0) _exit(126);
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    dup2(saida >= 0 ? saida : abre("saida.txt"), STDOUT_FILENO);
    dup2(erros >= 0 ? erros : abre("erros.txt"), STDERR_FILENO);
    setenv("TMPDIR", "tmp", 1);
    execv(argv.front(), argv.data());
    _exit(127);
}

TProgramaEmCurso::~TProgramaEmCurso() {
    if (processo_ <= 0) return;
    kill(processo_, SIGKILL);
    waitpid(processo_, nullptr, 0);
}

void TProgramaEmCurso::EsperaAtender() const {
    const std::string estado = "/proc/" + std::to_string(processo_) + "/status";
    for (int vez = 0; vez < 5000; ++vez) {
        const std::string texto = LeArquivo(estado);
        const std::size_t bloqueados = texto.find("SigBlk:");
        if (bloqueados != std::string::npos &&
            (std::stoull(texto.substr(bloqueados + 7), nullptr, 16) & (1ULL << (SIGTERM - 1))) != 0)
            return;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

void TProgramaEmCurso::Sinaliza(int sinal) const {
    if (processo_ > 0) kill(processo_, sinal);
}

int TProgramaEmCurso::Espera(std::chrono::milliseconds prazo) {
    const auto limite = std::chrono::steady_clock::now() + prazo;
    int estado = 0;
    while (waitpid(processo_, &estado, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > limite) return kCorreAinda;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    processo_ = 0;
    return Codigo(estado);
}

}  // namespace wkd
