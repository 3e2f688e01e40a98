#include "report/Pagina.h"

#include <algorithm>
#include <stdexcept>

namespace wkd {

extern const std::string_view kModeloDoRelatorio;  // recursos/relatorio.html

namespace {

std::string H(std::string_view texto) {
    std::string escapado;
    for (const char c : texto) {
        if (c == '&')
            escapado += "&amp;";
        else if (c == '<')
            escapado += "&lt;";
        else if (c == '>')
            escapado += "&gt;";
        else if (c == '"')
            escapado += "&quot;";
        else
            escapado += c;
    }
    return escapado;
}

/// Text between the line that begins the part of that name and the next part.
std::string_view Parte(std::string_view nome) {
    const std::string linha = "<!-- parte " + std::string(nome) + " -->\n";
    const auto inicio = kModeloDoRelatorio.find(linha);
    if (inicio == std::string_view::npos) throw std::logic_error("no part " + std::string(nome) + " in the page");
    const auto parte = kModeloDoRelatorio.substr(inicio + linha.size());
    return parte.substr(0, parte.find("<!-- parte "));
}

}  // namespace

std::string Preenche(std::string_view nome, const TCampos& campos) {
    std::string html;
    std::string_view resto = Parte(nome);
    for (auto abre = resto.find("{{"); abre != std::string_view::npos; abre = resto.find("{{")) {
        const bool partes = resto.substr(abre).starts_with("{{{");
        const std::size_t chaves = partes ? 3 : 2, fim = resto.find("}}", abre);
        const auto campo = resto.substr(abre + chaves, fim - abre - chaves);
        const auto achado = std::ranges::find(campos, campo, &TCampos::value_type::first);
        if (achado == campos.end()) throw std::logic_error("no value for " + std::string(campo) + " of the page");
        html.append(resto.substr(0, abre)).append(partes ? achado->second : H(achado->second));
        resto.remove_prefix(fim + chaves);
    }
    return html.append(resto);
}

}  // namespace wkd
