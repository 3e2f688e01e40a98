// Prints our times beside the least that must be done, both measured in this run: read the ratio, not the seconds.
// Arguments select the cases whose name contains one of them; none selects all.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <string_view>

#include "Casos.h"
#include "Reconstrucao.h"

int main(int quantos, char** argumentos) {
    const std::vector<std::string_view> pedidos(argumentos + 1, argumentos + quantos);
    const auto pedido = [&](const wkd::TCaso& caso) {
        return pedidos.empty() || std::ranges::any_of(pedidos, [&](std::string_view parte) {
                   return caso.nome.find(parte) != std::string_view::npos;
               });
    };
    try {
        if (pedidos.size() == 2 && pedidos[0] == wkd::kReconstroi) {
            wkd::ReconstroiEInforma(std::stoi(argumentos[2]));
            return 0;
        }
        wkd::TBancada bancada;
        std::puts(wkd::CabecalhoDaTabela().c_str());
        for (const wkd::TCaso& caso : wkd::kCasos) {
            if (!pedido(caso)) continue;
            for (const auto& medida : caso.mede(bancada)) std::puts(wkd::LinhaDaTabela(medida).c_str());
            std::fflush(stdout);
        }
        return 0;
    } catch (const std::exception& erro) {
        std::fprintf(stderr, "%s\n", erro.what());
        return 1;
    }
}
