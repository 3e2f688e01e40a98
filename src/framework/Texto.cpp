#include "Texto.h"

#include <algorithm>
#include <stdexcept>

namespace wkd {

namespace {

char Maiuscula(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }
char Minuscula(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
bool Branco(char c) { return static_cast<unsigned char>(c) <= 0x20; }

}  // namespace

std::string Maiusculas(std::string_view texto) {
    std::string resultado(texto);
    std::transform(resultado.begin(), resultado.end(), resultado.begin(), Maiuscula);
    return resultado;
}

std::string Minusculas(std::string_view texto) {
    std::string resultado(texto);
    std::transform(resultado.begin(), resultado.end(), resultado.begin(), Minuscula);
    return resultado;
}

std::string_view Apara(std::string_view texto) {
    while (!texto.empty() && Branco(texto.front())) texto.remove_prefix(1);
    while (!texto.empty() && Branco(texto.back())) texto.remove_suffix(1);
    return texto;
}

std::string_view AparaFim(std::string_view texto) {
    while (!texto.empty() && texto.back() == ' ') texto.remove_suffix(1);
    return texto;
}

bool IgualSemCaixa(std::string_view a, std::string_view b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return Maiuscula(x) == Maiuscula(y); });
}

std::string ChaveDeNome(std::string_view nome) { return Maiusculas(AparaFim(nome)); }

bool NomeDeSql(std::string_view nome) {
    const auto serve = [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '$';
    };
    return !nome.empty() && std::all_of(nome.begin(), nome.end(), serve);
}

std::string RecusaDoNome(std::string_view onde, std::string_view nome) {
    constexpr std::size_t kMostra = 80;
    const bool longo = nome.size() > kMostra;
    const auto inicio = longo ? nome.substr(0, CaracteresInteiros(nome.substr(0, kMostra))) : nome;
    return std::string(onde) + ": linha ignorada, o nome '" + std::string(inicio) + (longo ? "..." : "") +
           "' só pode ter letras sem acento, algarismos, \"_\" e \"$\". Corrija o nome e rode de novo.";
}

std::string Aspas(std::string_view texto) { return "'" + Troca(texto, "'", "''") + "'"; }

std::string Troca(std::string_view texto, std::string_view de, std::string_view para) {
    if (de.empty()) throw std::invalid_argument("Troca: texto procurado vazio");
    std::string resultado;
    for (;;) {
        const auto achado = texto.find(de);
        resultado += texto.substr(0, achado);
        if (achado == std::string_view::npos) return resultado;
        resultado += para;
        texto.remove_prefix(achado + de.size());
    }
}

std::vector<std::string> Divide(std::string_view texto, char separador) {
    std::vector<std::string> partes;
    if (texto.empty()) return partes;
    for (;;) {
        const auto achado = texto.find(separador);
        partes.emplace_back(texto.substr(0, achado));
        if (achado == std::string_view::npos) return partes;
        texto.remove_prefix(achado + 1);
    }
}

std::string Junta(const std::vector<std::string>& partes, std::string_view separador) {
    std::string resultado;
    for (std::size_t i = 0; i < partes.size(); ++i) {
        if (i > 0) resultado += separador;
        resultado += partes[i];
    }
    return resultado;
}

}  // namespace wkd
