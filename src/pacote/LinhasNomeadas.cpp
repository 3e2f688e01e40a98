#include "LinhasNomeadas.h"

#include <algorithm>

#include "Erros.h"
#include "Texto.h"

namespace wkd {

namespace {

std::int64_t Numero(const TValor& valor) {
    try {
        return valor.ComoInteiro();
    } catch (const TErroConversao&) {
        return 0;
    }
}

/// Numbers by their value, everything else as text.
bool Menor(const TValor& a, const TValor& b) {
    if (const auto* x = a.Se<std::int64_t>(), *y = b.Se<std::int64_t>(); x && y) return *x < *y;
    return Maiusculas(a.ComoTexto()) < Maiusculas(b.ComoTexto());
}

}  // namespace

TLinhasNomeadas::TLinhasNomeadas(TDataPacket pacote) : pacote_(std::move(pacote)) {
    for (std::size_t i = 0; i < pacote_.campos.size(); ++i)
        posicoes_.try_emplace(Maiusculas(pacote_.campos[i].nome), i);
}

void TLinhasNomeadas::Ordena(std::initializer_list<std::string_view> campos) {
    std::ranges::stable_sort(pacote_.linhas, [&](const TLinha& a, const TLinha& b) {
        for (const auto campo : campos) {
            const TValor &x = Valor(a, campo), &y = Valor(b, campo);
            if (Menor(x, y)) return true;
            if (Menor(y, x)) return false;
        }
        return false;
    });
}

const TValor& TLinhasNomeadas::Valor(const TLinha& linha, std::string_view campo) const {
    static const TValor nulo;
    const auto achada = posicoes_.find(Maiusculas(campo));
    return achada == posicoes_.end() ? nulo : linha[achada->second];
}

const TValor& TLinhasNomeadas::Valor(std::string_view campo) const { return Valor(pacote_.linhas[atual_ - 1], campo); }

std::string TLinhasNomeadas::Texto(std::string_view campo) const {
    return std::string(Apara(Valor(campo).ComoTexto()));
}

std::int64_t TLinhasNomeadas::Inteiro(std::string_view campo) const { return Numero(Valor(campo)); }

}  // namespace wkd
