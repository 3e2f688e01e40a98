#include "Eco.h"

#include <cstdio>

namespace wkd {

namespace {

void Escreve(std::FILE* saida, std::string_view linha) {
    std::fwrite(linha.data(), 1, linha.size(), saida);
    std::fputc('\n', saida);
    std::fflush(saida);
}

}  // namespace

void EscreveNaSaida(std::string_view linha) { Escreve(stdout, linha); }
void EscreveNosErros(std::string_view linha) { Escreve(stderr, linha); }

}  // namespace wkd
