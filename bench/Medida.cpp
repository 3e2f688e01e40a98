#include "Medida.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include "values/Json.h"

namespace wkd {

namespace {

std::string Decimais(double valor, int casas) {
    char texto[32];
    std::snprintf(texto, sizeof texto, "%.*f", casas, valor);
    return texto;
}

std::string Grandeza(const TMedida& medida, double valor) {
    if (valor < 0) return "";
    if (medida.unidade == TUnidade::Megabytes) return Decimais(valor, 1) + " MB";
    if (medida.unidade == TUnidade::Paginas) return Decimais(valor, 0) + " páginas";
    return valor < 1 ? Decimais(valor * 1e3, 1) + " ms" : Decimais(valor, 2) + " s";
}

const char* Nome(TUnidade unidade) {
    switch (unidade) {
        case TUnidade::Megabytes:
            return "MB";
        case TUnidade::Paginas:
            return "páginas";
        default:
            return "s";
    }
}

/// A number that only some lines have.
TValor SeHouver(bool ha, const TValor& valor) { return ha ? valor : TValor(); }

std::vector<std::pair<const char*, TValor>> Membros(const TMedida& m) {
    return {{"caso", m.caso},
            {"trabalho", m.trabalho},
            {"disco", m.disco},
            {"atraso_ms", m.atraso},
            {"unidade", Nome(m.unidade)},
            {"nosso", m.nosso},
            {"piso", m.doPiso},
            {"o_piso", m.piso},
            {"razao", m.Razao()},
            {"limite", SeHouver(m.limite > 0, m.limite)},
            {"ingenuo", SeHouver(m.ingenuo >= 0, m.ingenuo)},
            {"comandos", SeHouver(m.comandos >= 0, m.comandos)},
            {"voltas", SeHouver(m.voltas > 0, std::int64_t{m.voltas})},
            {"carga", m.carga}};
}

}  // namespace

void TMedida::Nosso(const TTempo& tempo) {
    nosso = std::min(nosso, tempo.segundos);
    voltas = tempo.voltas;
}

std::string CabecalhoDaTabela() {
    return "| caso | trabalho | disco | atraso | nosso | piso | razão | limite | ingênuo | comandos | voltas |\n"
           "|---|---|---|---|---|---|---|---|---|---|---|";
}

std::string LinhaDaTabela(const TMedida& m) {
    return "| " + m.caso + " | " + m.trabalho + " | " + m.disco + " | " +
           (m.atraso > 0 ? std::to_string(m.atraso) + " ms" : "") + " | " + Grandeza(m, m.nosso) + " | " +
           Grandeza(m, m.doPiso) + ", " + m.piso + " | " + Decimais(m.Razao(), 2) + " | " +
           (m.limite > 0 ? Decimais(m.limite, 2) : "") + " | " + Grandeza(m, m.ingenuo) + " | " +
           (m.comandos < 0 ? "" : std::to_string(m.comandos)) + " | " + (m.voltas > 0 ? std::to_string(m.voltas) : "") +
           " |";
}

void GravaJson(const std::filesystem::path& arquivo, const std::vector<TMedida>& medidas) {
    std::ofstream saida(arquivo, std::ios::trunc);
    const char* separador = "[\n";
    for (const TMedida& medida : medidas) {
        saida << separador << "  {";
        const char* virgula = "";
        for (const auto& [nome, valor] : Membros(medida)) {
            saida << virgula;
            EscreveJson(saida, std::string_view(nome));
            saida << ": ";
            EscreveJson(saida, valor);
            virgula = ", ";
        }
        saida << "}";
        separador = ",\n";
    }
    saida << (medidas.empty() ? "[]\n" : "\n]\n");
    if (!saida.flush()) throw std::runtime_error(arquivo.string() + " não pôde ser gravado");
}

double CargaDaMaquina() {
    double carga = 0;
    getloadavg(&carga, 1);
    return carga;
}

}  // namespace wkd
