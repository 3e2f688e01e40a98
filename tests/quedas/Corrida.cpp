// Runs the update of the alias "LOJA" of a folder and ends the process at statement n, as a power cut would: without
// closing, committing or rolling anything back. Arguments: folder, n. Exit code 9 when it was cut, 0 or 1 when the run
// ended first (1: something was reported, which goes to standard error). "erro" as third argument makes the server's
// answer to statement n an error instead, "sinal" sends SIGTERM there; exit code 143 when that ended the run.
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <thread>

#include "OpcoesDeTeste.h"
#include "TelaDeTeste.h"
#include "process/Interrupcao.h"
#include "process/Programa.h"
#include "run/Atualizacao.h"

#ifndef _WIN32
#include <unistd.h>
#endif

namespace {

using namespace wkd;

constexpr int kCortado = 9;

#ifdef _WIN32
void Sinaliza() { TInterrupcao::Pede(SIGTERM); }
#else
void Sinaliza() { kill(getpid(), SIGTERM); }
#endif

TErroBanco ErroDoServidor(std::string_view comando) {
    return TErroBanco({.mensagem = "erro provocado",
                       .codigoNativo = 1,
                       .sqlstate = "HY000",
                       .comando = std::string(comando),
                       .falha = TFalha::EmUso,
                       .conexaoPerdida = false});
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) return 64;
    const std::filesystem::path pasta = argv[1];
    const int ultimo = std::atoi(argv[2]);
    const std::string_view como = argc > 3 ? argv[3] : "";
    TInterrupcao::AtendeSinais({});

    TTelaDeTeste tela;
    TDataModulo dm(TAliases(pasta / "WKD.ini"), tela);
    dm.SQLConnection1.SetAlias("LOJA");
    dm.SQLConnection1.Open();
    int comandos = 0;
    dm.SQLConnection1.Observa([&](std::string_view comando) {
        if (++comandos != ultimo) return;
        if (como.empty()) std::_Exit(kCortado);
        if (como == "erro") throw ErroDoServidor(comando);
        Sinaliza();
        while (TInterrupcao::Sinal() == 0) std::this_thread::yield();
    });

    TEstado estado;
    TAtualizacao(dm, OpcoesDeTeste(pasta), estado).Executa();
    for (const auto* linhas : {&tela.memo2, &tela.infos})
        for (const std::string& linha : *linhas) std::cerr << linha << '\n';
    std::cout << comandos << '\n';
    if (TInterrupcao::Sinal() != 0) return static_cast<int>(CodigoDoSinal(TInterrupcao::Sinal()));
    return tela.memo2.empty() && tela.infos.empty() && tela.log.empty() ? 0 : 1;
}
