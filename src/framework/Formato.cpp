#include "Formato.h"

#include <cstdio>

namespace wkd {

namespace {

std::string Digitos(int largura, std::int64_t numero) {
    char texto[24];
    std::snprintf(texto, sizeof texto, "%0*lld", largura, static_cast<long long>(numero));
    return texto;
}

}  // namespace

std::string FormataDataHora(TDataHora quando, std::string_view padrao) {
    const TCalendario dia = CalendarioDe(quando.data);
    const std::int64_t segundos = quando.hora.tiques / kTiquesPorSegundo;
    bool depoisDaHora = false;
    std::string texto;
    while (!padrao.empty()) {
        const auto peca = [&padrao](std::string_view nome) {
            if (!padrao.starts_with(nome)) return false;
            padrao.remove_prefix(nome.size());
            return true;
        };
        if (peca("yyyy")) {
            texto += Digitos(4, dia.ano);
        } else if (peca("yy")) {
            texto += Digitos(2, dia.ano % 100);
        } else if (peca("dd")) {
            texto += Digitos(2, dia.dia);
        } else if (peca("hh")) {
            texto += Digitos(2, segundos / 3600);
            depoisDaHora = true;
        } else if (peca("mm")) {
            texto += Digitos(2, depoisDaHora ? segundos / 60 % 60 : dia.mes);
        } else if (peca("ss")) {
            texto += Digitos(2, segundos % 60);
        } else {
            texto += padrao.front();
            padrao.remove_prefix(1);
        }
    }
    return texto;
}

std::string FormataDuracao(TDataHora inicio, TDataHora fim) {
    const std::int64_t dias = fim.data.dias - inicio.data.dias;
    return FormataDuracao(
        std::chrono::seconds(dias * 86'400 + (fim.hora.tiques - inicio.hora.tiques) / kTiquesPorSegundo));
}

std::string FormataDuracao(std::chrono::seconds duracao) {
    const std::int64_t segundos = duracao.count();
    return Digitos(2, segundos / 3600) + ":" + Digitos(2, segundos / 60 % 60) + ":" + Digitos(2, segundos % 60);
}

std::string ComMilhares(std::int64_t numero) {
    std::string texto = std::to_string(numero);
    const std::size_t primeiro = numero < 0 ? 1 : 0;
    for (std::size_t fim = texto.size(); fim > primeiro + 3; fim -= 3) texto.insert(fim - 3, 1, '.');
    return texto;
}

}  // namespace wkd
