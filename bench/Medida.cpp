#include "Medida.h"

#include <cstdio>

namespace wkd {

namespace {

std::string Decimais(double valor, int casas) {
    char texto[32];
    std::snprintf(texto, sizeof texto, "%.*f", casas, valor);
    return texto;
}

std::string Grandeza(const TMedida& medida, double valor) {
    if (valor < 0) return "";
    if (medida.emMegabytes) return Decimais(valor, 1) + " MB";
    return valor < 1 ? Decimais(valor * 1e3, 1) + " ms" : Decimais(valor, 2) + " s";
}

}  // namespace

std::string CabecalhoDaTabela() {
    return "| trabalho | nosso | piso | razão | limite | ingênuo | comandos |\n|---|---|---|---|---|---|---|";
}

std::string LinhaDaTabela(const TMedida& m) {
    return "| " + m.trabalho + " | " + Grandeza(m, m.nosso) + " | " + Grandeza(m, m.doPiso) + ", " + m.piso + " | " +
           Decimais(m.Razao(), 2) + " | " + Decimais(m.limite, 2) + " | " + Grandeza(m, m.ingenuo) + " | " +
           (m.comandos < 0 ? "" : std::to_string(m.comandos)) + " |";
}

}  // namespace wkd
