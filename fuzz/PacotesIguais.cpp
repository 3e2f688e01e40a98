#include "PacotesIguais.h"

#include <cmath>
#include <stdexcept>
#include <tuple>

namespace wkd {

namespace {

THora NoMilissegundo(THora hora) { return {hora.tiques / 10'000 * 10'000}; }

/// Equal but for what packets do not hold: less than a millisecond, and an empty blob in the XML form.
bool Iguais(const TValor& a, const TValor& b, TTipoDado tipo) {
    if (const auto* x = a.Se<double>(), *y = b.Se<double>(); x && y && std::isnan(*x)) return std::isnan(*y);
    if (const auto* x = a.Se<THora>(), *y = b.Se<THora>(); x && y) return NoMilissegundo(*x) == NoMilissegundo(*y);
    if (const auto* x = a.Se<TDataHora>(), *y = b.Se<TDataHora>(); x && y)
        return x->data == y->data && NoMilissegundo(x->hora) == NoMilissegundo(y->hora);
    const bool blob = tipo == TTipoDado::Blob || tipo == TTipoDado::Memo || tipo == TTipoDado::Bytes;
    return blob ? a.ComoBytes() == b.ComoBytes() : a == b;
}

/// Sizes aside: a decimal gets the room that its values take.
auto Descricao(const TCampoPacote& campo) {
    return std::tie(campo.nome, campo.tipoXml, campo.subtipo, campo.escala, campo.requerido, campo.somenteLeitura,
                    campo.oculto, campo.ligacao);
}

}  // namespace

void LeConteudos(TDataPacket& pacote) {
    for (auto& linha : pacote.linhas)
        for (auto& valor : linha)
            if (valor.Se<std::shared_ptr<const TConteudo>>()) valor = TBytes{valor.ComoBytes()};
}

void ExigeIguais(const TDataPacket& lido, const TDataPacket& original) {
    if (lido.campos.size() != original.campos.size() || lido.linhas.size() != original.linhas.size())
        throw std::logic_error("a packet of another size came back");
    if (lido.estados != original.estados) throw std::logic_error("other row states came back");
    if (lido.parametros != original.parametros) throw std::logic_error("other parameters came back");
    for (std::size_t c = 0; c < lido.campos.size(); ++c) {
        const auto &a = lido.campos[c], &b = original.campos[c];
        if (Descricao(a) != Descricao(b)) throw std::logic_error("field " + b.nome + " came back as another");
        for (std::size_t i = 0; i < lido.linhas.size(); ++i)
            if (!Iguais(original.linhas[i][c], lido.linhas[i][c], b.tipo))
                throw std::logic_error("another value of " + b.nome + " came back");
    }
}

}  // namespace wkd
