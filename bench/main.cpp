// Prints our times beside the least that must be done, both measured in this run: read the ratio, not the seconds.
#include <cstdio>
#include <exception>

#include "BancoGrande.h"
#include "Casos.h"

namespace {

void Mostra(const std::vector<wkd::TMedida>& medidas) {
    for (const auto& medida : medidas) {
        const std::string comandos = medida.comandos < 0 ? "" : std::to_string(medida.comandos);
        std::printf("| %s | %.1f ms | %.1f ms | %.2f | %s |\n", medida.trabalho.c_str(), medida.nosso * 1e3,
                    medida.piso * 1e3, medida.nosso / medida.piso, comandos.c_str());
        std::fflush(stdout);
    }
}

}  // namespace

int main() {
    try {
        std::puts("| trabalho | nosso | piso | razão | comandos |\n|---|---|---|---|---|");
        Mostra(wkd::MedePacotes());
        const wkd::TBancoGrande banco;
        Mostra(wkd::MedeNadaMudou(banco));
        return 0;
    } catch (const std::exception& erro) {
        std::fprintf(stderr, "%s\n", erro.what());
        return 1;
    }
}
