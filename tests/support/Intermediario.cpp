#include "Intermediario.h"

#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

namespace wkd {
namespace {

constexpr int kPassoMs = 5;

bool Chegou(int soquete) {
    pollfd p{soquete, POLLIN, 0};
    return poll(&p, 1, kPassoMs) > 0;
}

/// The length of the file's name is the fifth number of the first packet.
bool PedeServico(int programa) {
    char inicio[20] = {1};
    recv(programa, inicio, sizeof inicio, MSG_PEEK | MSG_WAITALL);
    return std::all_of(inicio + 16, inicio + 20, [](char byte) { return byte == 0; });
}

/// False when the other side has ended.
bool Leva(int de, int para) {
    char bytes[16384];
    const auto lidos = recv(de, bytes, sizeof bytes, MSG_DONTWAIT);
    if (lidos < 0) return errno == EAGAIN || errno == EWOULDBLOCK;
    if (lidos == 0) return false;
    for (ssize_t enviados = 0; para >= 0 && enviados < lidos;) {
        const auto agora = send(para, bytes + enviados, static_cast<std::size_t>(lidos - enviados), MSG_NOSIGNAL);
        if (agora <= 0) return false;
        enviados += agora;
    }
    return true;
}

}  // namespace

TIntermediario::TIntermediario(int servidor) : servidor_(servidor), thread_([this] { Atende(); }) {}

TIntermediario::~TIntermediario() {
    fim_ = true;
    thread_.join();
    Todas(TModo::Cortada);
    for (auto& linha : linhas_) linha.thread.join();
}

void TIntermediario::Emudece() { Todas(TModo::Muda); }
void TIntermediario::Corta() { Todas(TModo::Cortada); }
void TIntermediario::CortaAVolta() { Todas(TModo::SemVolta); }

void TIntermediario::Todas(TModo modo) {
    const std::lock_guard trava(guarda_);
    for (auto& linha : linhas_) linha.modo = modo;
}

void TIntermediario::Atende() {
    while (!fim_) {
        if (!Chegou(escuta_.Soquete())) continue;
        const int programa = accept(escuta_.Soquete(), nullptr, nullptr);
        if (programa < 0) continue;
        if (aceita_ && !(recusaServicos_ && PedeServico(programa)))
            Liga(programa);
        else
            close(programa);
    }
}

void TIntermediario::Liga(int programa) {
    const int servidor = socket(AF_INET, SOCK_STREAM, 0), sim = 1;
    const auto endereco = Local(servidor_);
    if (connect(servidor, reinterpret_cast<const sockaddr*>(&endereco), sizeof endereco) != 0) {
        close(servidor);
        close(programa);
        return;
    }
    for (const int soquete : {programa, servidor}) setsockopt(soquete, IPPROTO_TCP, TCP_NODELAY, &sim, sizeof sim);
    const std::lock_guard trava(guarda_);
    TLinha& linha = linhas_.emplace_back();
    linha.programa = programa;
    linha.servidor = servidor;
    linha.thread = std::thread([this, &linha] { Passa(linha); });
}

void TIntermediario::Passa(TLinha& linha) {
    using TRelogio = std::chrono::steady_clock;
    TRelogio::time_point corte = TRelogio::time_point::max();
    while (linha.modo != TModo::Cortada && TRelogio::now() < corte) {
        if (linha.modo == TModo::Muda) {
            std::this_thread::sleep_for(std::chrono::milliseconds(kPassoMs));
            continue;
        }
        const bool semVolta = linha.modo == TModo::SemVolta;
        if (semVolta && corte == TRelogio::time_point::max()) corte = TRelogio::now() + std::chrono::milliseconds(150);
        pollfd dois[] = {{linha.programa, POLLIN, 0}, {linha.servidor, POLLIN, 0}};
        poll(dois, 2, kPassoMs);
        if (dois[0].revents && !Leva(linha.programa, linha.servidor)) break;
        if (dois[1].revents && !Leva(linha.servidor, semVolta ? -1 : linha.programa)) break;
    }
    close(linha.programa);
    close(linha.servidor);
}

}  // namespace wkd
