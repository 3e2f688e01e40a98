#include "Portas.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <stdexcept>

namespace wkd {

sockaddr_in Local(int porta) {
    sockaddr_in endereco{};
    endereco.sin_family = AF_INET;
    endereco.sin_port = htons(static_cast<std::uint16_t>(porta));
    endereco.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return endereco;
}

TPortaMuda::TPortaMuda(int fila) : soquete_(socket(AF_INET, SOCK_STREAM, 0)) {
    auto endereco = Local(0);
    socklen_t tamanho = sizeof endereco;
    const bool ligado = bind(soquete_, reinterpret_cast<const sockaddr*>(&endereco), tamanho) == 0 &&
                        listen(soquete_, fila) == 0 &&
                        getsockname(soquete_, reinterpret_cast<sockaddr*>(&endereco), &tamanho) == 0;
    if (!ligado) throw std::runtime_error("no free port");
    numero_ = ntohs(endereco.sin_port);
}

TPortaMuda::~TPortaMuda() { close(soquete_); }

int PortaLivre() { return TPortaMuda().Numero(); }

}  // namespace wkd
