#include "process/Interrupcao.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <mutex>
#include <thread>
#include <vector>

#include "process/Terminal.h"

#ifdef _WIN32
#include <windows.h>

#include <csignal>
#else
#include <pthread.h>
#include <signal.h>
#include <unistd.h>
#endif

namespace wkd {

namespace {

using TRelogio = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kIntervalo{100};

struct TPedido {
    std::atomic<int> sinal = 0, vezes = 0;
    std::atomic<TRelogio::time_point> quando{};
    TInterrupcao::TPrazos prazos;
    std::mutex guarda;
    std::vector<TOuvinteDeInterrupcao::TEscuta*> ouvintes;  // behind guarda
};

/// Never destroyed: a signal may come while the process ends.
TPedido& Pedido() {
    static TPedido& pedido = *new TPedido;
    return pedido;
}

std::chrono::milliseconds Passados() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(TRelogio::now() - Pedido().quando.load());
}

void Avisa() {
    const std::lock_guard trava(Pedido().guarda);
    for (const auto* escuta : Pedido().ouvintes) (*escuta)(TInterrupcao::Etapa());
}

#ifdef _WIN32
[[noreturn]] void Mata() {
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(128 + TInterrupcao::Sinal()));
    std::abort();  // not reached
}

/// The system ends the process some seconds after a closed console, whatever happens here.
BOOL WINAPI Console(DWORD evento) {
    TInterrupcao::Pede(evento == CTRL_C_EVENT ? SIGINT : SIGTERM);
    if (evento == CTRL_C_EVENT || evento == CTRL_BREAK_EVENT) return TRUE;
    Sleep(INFINITE);
    return TRUE;
}

void LigaSinais() { SetConsoleCtrlHandler(Console, TRUE); }

void EsperaPedido() {
    while (TInterrupcao::Sinal() == 0) std::this_thread::sleep_for(kIntervalo);
}
void EsperaOutro() { std::this_thread::sleep_for(kIntervalo); }
#else
[[noreturn]] void Mata() { _exit(128 + TInterrupcao::Sinal()); }

const sigset_t& Sinais() {
    static const sigset_t sinais = [] {
        sigset_t conjunto;
        sigemptyset(&conjunto);
        sigaddset(&conjunto, SIGINT);
        sigaddset(&conjunto, SIGTERM);
        return conjunto;
    }();
    return sinais;
}

/// Every thread started from here on inherits the mask; a program started from here is not to.
void LigaSinais() {
    pthread_sigmask(SIG_BLOCK, &Sinais(), nullptr);
    pthread_atfork(nullptr, nullptr, [] { pthread_sigmask(SIG_UNBLOCK, &Sinais(), nullptr); });
}

void EsperaPedido() {
    int sinal = 0;
    while (sigwait(&Sinais(), &sinal) != 0) continue;
    TInterrupcao::Pede(sinal);
}

void EsperaOutro() {
    const timespec prazo{0, std::chrono::nanoseconds(kIntervalo).count()};
    if (const int sinal = sigtimedwait(&Sinais(), nullptr, &prazo); sinal > 0) TInterrupcao::Pede(sinal);
}
#endif

/// Of the thread that waits for signals.
void Atende() {
    EsperaPedido();
    while (Passados() < Pedido().prazos.mata) {
        Avisa();
        EsperaOutro();
    }
    GravaNoFluxo(kErros, "Interrompida à força: o servidor não respondeu. Rode de novo.\n");
    Mata();
}

}  // namespace

void TInterrupcao::AtendeSinais(const TPrazos& prazos) {
    Pedido().prazos = prazos;
    LigaSinais();
    std::thread(Atende).detach();
}

void TInterrupcao::Pede(int sinal) {
    TPedido& pedido = Pedido();
    if (pedido.vezes++ > 0) return;
    pedido.quando = TRelogio::now();
    pedido.sinal = sinal;
}

int TInterrupcao::Sinal() { return Pedido().sinal; }

void TInterrupcao::Confere(bool emTransacao) {
    const TEtapa etapa = Etapa();
    if (etapa >= (emTransacao ? TEtapa::Cancela : TEtapa::Pedida)) throw TInterrompida();
}

void TInterrupcao::Esquece() {
    Pedido().sinal = 0;
    Pedido().vezes = 0;
}

TInterrupcao::TEtapa TInterrupcao::Etapa() {
    const TPedido& pedido = Pedido();
    if (pedido.sinal == 0) return TEtapa::Nenhuma;
    const bool outra = pedido.vezes > 1;
    const auto passados = Passados();
    if (passados >= pedido.prazos.abandona) return TEtapa::Abandona;
    return outra || passados >= pedido.prazos.cancela ? TEtapa::Cancela : TEtapa::Pedida;
}

void EncerraProcesso(TCodigoDeSaida codigo) {
    std::cout.flush();
    std::fflush(nullptr);
    DevolveConsole();
    std::_Exit(static_cast<int>(codigo));
}

TOuvinteDeInterrupcao::TOuvinteDeInterrupcao(TEscuta escuta) : escuta_(std::move(escuta)) {
    const std::lock_guard trava(Pedido().guarda);
    Pedido().ouvintes.push_back(&escuta_);
}

TOuvinteDeInterrupcao::~TOuvinteDeInterrupcao() {
    const std::lock_guard trava(Pedido().guarda);
    std::erase(Pedido().ouvintes, &escuta_);
}

}  // namespace wkd
