#include "Reconstrucao.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "BancoDaCopia.h"
#include "Casos.h"
#include "rebuild/Nova.h"

namespace wkd {

namespace {

constexpr int kPoucas = 100000, kMuitas = 1000000;

struct TGasto {
    double segundos = 0, megabytes = 0;
};

double PicoDeMemoria() {
    std::ifstream estado("/proc/self/status");
    for (std::string linha; std::getline(estado, linha);)
        if (linha.starts_with("VmHWM:")) return std::stod(linha.substr(6)) / 1024;
    throw std::runtime_error("o pico de memória não é conhecido");
}

/// A rebuild in a process of its own, whose memory is then that of the rebuild.
TGasto EmOutroProcesso(int linhas) {
    const std::string comando = std::filesystem::read_symlink("/proc/self/exe").string() + " " +
                                std::string(kReconstroi) + " " + std::to_string(linhas);
    const std::unique_ptr<FILE, int (*)(FILE*)> saida(popen(comando.c_str(), "r"), &pclose);
    TGasto gasto;
    if (!saida || std::fscanf(saida.get(), "%lf %lf", &gasto.segundos, &gasto.megabytes) != 2)
        throw std::runtime_error("a reconstrução de " + std::to_string(linhas) + " registros falhou");
    return gasto;
}

}  // namespace

void ReconstroiEInforma(int linhas) {
    TBancoDaCopia banco(TBancada::Embutido(), linhas);
    const double tempo = Cronometra([&] { Nova(banco.Contexto(), "TCLI"); });
    banco.ConfereSemErros();
    if (banco.Conta("TCLI") != linhas) throw std::runtime_error("a reconstrução perdeu registros");
    std::printf("%f %f\n", tempo, PicoDeMemoria());
}

std::vector<TMedida> MedeReconstrucao(TBancada&) {
    TMedida tempo{
        .trabalho = "reconstrução de 1.000.000 de registros, embutido", .piso = "a de 100.000", .limite = 10.5};
    const TGasto antes = EmOutroProcesso(kPoucas), muitas = EmOutroProcesso(kMuitas), depois = EmOutroProcesso(kPoucas);
    tempo.nosso = muitas.segundos;
    tempo.doPiso = (antes.segundos + depois.segundos) / 2;
    return {tempo,
            {.trabalho = "memória dessa reconstrução",
             .piso = "a de 100.000",
             .limite = 1.05,
             .nosso = muitas.megabytes,
             .doPiso = depois.megabytes,
             .emMegabytes = true}};
}

}  // namespace wkd
