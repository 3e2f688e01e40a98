#include "Processo.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>

namespace wkd {

namespace {

double PicoDeMemoria() {
    std::ifstream estado("/proc/self/status");
    for (std::string linha; std::getline(estado, linha);)
        if (linha.starts_with("VmHWM:")) return std::stod(linha.substr(6)) / 1024;
    throw std::runtime_error("o pico de memória não é conhecido");
}

}  // namespace

TGasto EmOutroProcesso(std::string_view trabalho, const std::string& argumento) {
    const std::string pedido = std::string(trabalho) + ":" + argumento;
    const std::string comando =
        std::filesystem::read_symlink("/proc/self/exe").string() + " " + std::string(kProcesso) + " '" + pedido + "'";
    const std::unique_ptr<FILE, int (*)(FILE*)> saida(popen(comando.c_str(), "r"), &pclose);
    TGasto gasto;
    if (!saida || std::fscanf(saida.get(), "%lf %lf", &gasto.segundos, &gasto.megabytes) != 2)
        throw std::runtime_error(pedido + " falhou");
    return gasto;
}

void TrabalhaEInforma(std::string_view pedido) {
    const auto meio = pedido.find(':');
    for (const auto& [nome, faz] : kTrabalhos) {
        if (pedido.substr(0, meio) != nome) continue;
        const double segundos = faz(std::string(pedido.substr(meio + 1)));
        std::printf("%f %f\n", segundos, PicoDeMemoria());
        return;
    }
    throw std::runtime_error("trabalho desconhecido: " + std::string(pedido));
}

}  // namespace wkd
