#include "LinhaLenta.h"

#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

namespace wkd {

namespace {

using namespace std::chrono_literals;

constexpr auto kPasso = 50ms;  // after which the end is seen

}  // namespace

TLinhaLenta::TLinhaLenta(int servidor, std::chrono::microseconds atraso)
    : servidor_(servidor), atraso_(atraso), thread_([this] { Atende(); }) {}

TLinhaLenta::~TLinhaLenta() {
    fim_ = true;
    thread_.join();
    for (const auto& ligacao : ligacoes_) {
        close(ligacao.ida.de);
        close(ligacao.ida.para);
    }
}

void TLinhaLenta::Atende() {
    while (!fim_) {
        EsperaAlgo();
        for (auto& ligacao : ligacoes_)
            for (TSentido* sentido : {&ligacao.ida, &ligacao.volta}) {
                Recebe(ligacao, *sentido);
                Entrega(*sentido);
            }
        ligacoes_.remove_if([](const TLigacao& ligacao) {
            const bool acabou =
                ligacao.ida.acabou && ligacao.volta.acabou && ligacao.ida.fila.empty() && ligacao.volta.fila.empty();
            if (acabou) close(ligacao.ida.de), close(ligacao.ida.para);
            return acabou;
        });
    }
}

/// Until bytes have come, or have waited long enough; takes a new connection.
void TLinhaLenta::EsperaAlgo() {
    std::vector<pollfd> soquetes = {{escuta_.Soquete(), POLLIN, 0}};
    const auto agora = TRelogio::now();
    auto quando = agora + kPasso;
    for (const auto& ligacao : ligacoes_)
        for (const TSentido* sentido : {&ligacao.ida, &ligacao.volta}) {
            if (!sentido->acabou) soquetes.push_back({sentido->de, POLLIN, 0});
            if (sentido->fila.empty()) continue;
            if (sentido->fila.front().quando <= agora)
                soquetes.push_back({sentido->para, POLLOUT, 0});
            else
                quando = std::min(quando, sentido->fila.front().quando);
        }
    const auto espera = std::chrono::duration_cast<std::chrono::nanoseconds>(quando - agora);
    const timespec limite{espera / 1s, (espera % 1s).count()};
    ppoll(soquetes.data(), soquetes.size(), &limite, nullptr);
    if (soquetes.front().revents & POLLIN) Liga();
}

void TLinhaLenta::Liga() {
    const int cliente = accept(escuta_.Soquete(), nullptr, nullptr);
    const int servidor = socket(AF_INET, SOCK_STREAM, 0), sim = 1;
    const auto endereco = Local(servidor_);
    if (connect(servidor, reinterpret_cast<const sockaddr*>(&endereco), sizeof endereco) != 0) {
        close(servidor);
        close(cliente);
        return;
    }
    for (const int soquete : {cliente, servidor}) setsockopt(soquete, IPPROTO_TCP, TCP_NODELAY, &sim, sizeof sim);
    ligacoes_.push_back({{cliente, servidor}, {servidor, cliente}});
}

void TLinhaLenta::Recebe(TLigacao& ligacao, TSentido& sentido) {
    if (sentido.acabou) return;
    char bytes[65536];
    const auto lidos = recv(sentido.de, bytes, sizeof bytes, MSG_DONTWAIT);
    if (lidos < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return;
    const bool ida = &sentido == &ligacao.ida;
    if (lidos > 0 && ida && !ligacao.perguntou) ++voltas_;
    if (lidos > 0) ligacao.perguntou = ida;
    sentido.acabou = lidos <= 0;
    sentido.fila.push_back(
        {TRelogio::now() + atraso_, std::string(bytes, static_cast<std::size_t>(std::max<ssize_t>(lidos, 0)))});
}

void TLinhaLenta::Entrega(TSentido& sentido) {
    while (!sentido.fila.empty() && sentido.fila.front().quando <= TRelogio::now()) {
        std::string& bytes = sentido.fila.front().bytes;
        if (bytes.empty()) {
            shutdown(sentido.para, SHUT_WR);
        } else {
            const auto enviados = send(sentido.para, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
            if (enviados < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return;
            if (enviados >= 0) bytes.erase(0, static_cast<std::size_t>(enviados));
            if (enviados >= 0 && !bytes.empty()) return;
        }
        sentido.fila.pop_front();
    }
}

}  // namespace wkd
