#include "ServidorFirebird.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace wkd {
namespace {

constexpr const char* kPrograma = "/usr/sbin/firebird";

bool Atende(int porta) {
    const int soquete = socket(AF_INET, SOCK_STREAM, 0);
    const auto endereco = Local(porta);
    const bool atende = connect(soquete, reinterpret_cast<const sockaddr*>(&endereco), sizeof endereco) == 0;
    close(soquete);
    return atende;
}

std::string Leia(const std::filesystem::path& arquivo) {
    std::ostringstream texto;
    texto << std::ifstream(arquivo).rdbuf();
    return texto.str();
}

pid_t Inicia(const std::string& pasta, const std::string& porta, const std::string& configuracao) {
    const pid_t processo = fork();
    if (processo != 0) return processo;
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // the server does not outlive a test program that is ended
    execl("/bin/sh", "sh", WKD_ROTEIRO_DO_SERVIDOR, pasta.c_str(), porta.c_str(), configuracao.c_str(), nullptr);
    _exit(127);
}

}  // namespace

TServidorFirebird::TServidorFirebird(const std::string& configuracao)
    : porta_(PortaLivre()), processo_(Inicia(pasta_.Caminho().string(), std::to_string(porta_), configuracao)) {
    Espera();
}

void TServidorFirebird::Espera() {
    for (int vez = 0; vez < 600; ++vez) {
        if (Atende(porta_)) return;
        if (waitpid(processo_, nullptr, WNOHANG) == processo_) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    throw std::runtime_error("the Firebird server did not start: " + Leia(pasta_ / "security.log") +
                             Leia(pasta_ / "servidor.log"));
}

TServidorFirebird::~TServidorFirebird() {
    kill(processo_, SIGKILL);  // with a connection open, the orderly end may wait for ever
    waitpid(processo_, nullptr, 0);
}

bool TServidorFirebird::Instalado() { return std::filesystem::exists(kPrograma); }

TServidorFirebird& TServidorFirebird::DoProcesso() {
    static TServidorFirebird servidor;
    return servidor;
}

}  // namespace wkd

/// The client library and its ICU keep some of what they allocate once until the process ends.
extern "C" const char* __lsan_default_suppressions() { return "leak:libfbclient\nleak:libicuuc"; }
