#include "values/SomaDeValores.h"

#include <array>
#include <bit>

namespace wkd {

namespace {

struct TSoma {
    THash& hash;
    const TValor& valor;

    void operator()(std::monostate) const {}
    void operator()(bool v) const { hash.Soma(std::uint64_t{v}); }
    void operator()(std::int64_t v) const { hash.Soma(static_cast<std::uint64_t>(v)); }
    void operator()(const TDecimal& v) const {
        hash.Soma(static_cast<std::uint64_t>(v.valor));
        hash.Soma(static_cast<std::uint64_t>(v.escala));
    }
    void operator()(double v) const { hash.Soma(std::bit_cast<std::uint64_t>(v)); }
    void operator()(const TData& v) const { hash.Soma(static_cast<std::uint64_t>(v.dias)); }
    void operator()(const THora& v) const { hash.Soma(static_cast<std::uint64_t>(v.tiques)); }
    void operator()(const TDataHora& v) const {
        (*this)(v.data);
        (*this)(v.hora);
    }
    void operator()(const std::string& v) const { Bytes(v); }
    void operator()(const TBytes& v) const { Bytes(v.bytes); }
    void operator()(const std::shared_ptr<const TConteudo>&) const {
        std::size_t tamanho = 0;
        hash.Soma(HashDosBytes(valor, tamanho));
        hash.Soma(std::uint64_t{tamanho});
    }

    void Bytes(std::string_view bytes) const {
        hash.Soma(std::uint64_t{bytes.size()});
        hash.Soma(bytes);
    }
};

}  // namespace

std::uint64_t HashDosBytes(const TValor& valor, std::size_t& tamanho) {
    THash hash;
    tamanho = 0;
    const auto soma = [&](std::string_view bytes) {
        hash.Soma(bytes);
        tamanho += bytes.size();
    };
    if (const auto* conteudo = valor.Se<std::shared_ptr<const TConteudo>>()) {
        std::array<char, 32 * 1024> pedaco;
        const auto leitor = (*conteudo)->Abre();
        while (const auto lidos = leitor->Le(pedaco)) soma({pedaco.data(), lidos});
    } else {
        soma(valor.ComoBytes());
    }
    return hash.Valor();
}

void SomaValor(THash& hash, const TValor& valor) {
    hash.Soma(std::uint64_t{valor.Variante().index()});
    std::visit(TSoma{hash, valor}, valor.Variante());
}

}  // namespace wkd
