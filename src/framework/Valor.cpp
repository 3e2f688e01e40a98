#include "Valor.h"

#include <array>
#include <cmath>
#include <cstring>

#include "Erros.h"
#include "Texto.h"
#include "TextoDeData.h"
#include "TextoDeNumero.h"

namespace wkd {

namespace {

using TConteudoComum = std::shared_ptr<const TConteudo>;

template <class... T>
struct TCasos : T... {
    using T::operator()...;
};
template <class... T>
TCasos(T...) -> TCasos<T...>;

[[noreturn]] void NaoEhNumero(const TValor& valor) {
    throw TErroConversao("\"" + valor.ComoTexto() + "\" não é um número válido");
}

class TLeitorMemoria : public TLeitorBytes {
  public:
    explicit TLeitorMemoria(std::string_view bytes) : bytes_(bytes) {}
    std::size_t Le(std::span<char> destino) override {
        const std::size_t lidos = bytes_.copy(destino.data(), destino.size());
        bytes_.remove_prefix(lidos);
        return lidos;
    }

  private:
    std::string_view bytes_;
};

/// Reader of what compares by bytes: text, bytes, content; null for any other value.
std::unique_ptr<TLeitorBytes> AbreBytes(const TValor& valor) {
    if (const auto* texto = valor.Se<std::string>()) return std::make_unique<TLeitorMemoria>(*texto);
    if (const auto* bytes = valor.Se<TBytes>()) return std::make_unique<TLeitorMemoria>(bytes->bytes);
    if (const auto* conteudo = valor.Se<TConteudoComum>()) return (*conteudo)->Abre();
    return nullptr;
}

/// Fills `destino` unless the stream ends before.
std::size_t LeBloco(TLeitorBytes& leitor, std::span<char> destino) {
    std::size_t total = 0;
    while (total < destino.size()) {
        const std::size_t lidos = leitor.Le(destino.subspan(total));
        if (lidos == 0) break;
        total += lidos;
    }
    return total;
}

bool IguaisPorBytes(const TValor& a, const TValor& b) {
    const auto leitorA = AbreBytes(a);
    const auto leitorB = AbreBytes(b);
    if (!leitorA || !leitorB) return false;
    std::array<char, 8192> blocoA, blocoB;
    for (;;) {
        const std::size_t lidosA = LeBloco(*leitorA, blocoA);
        const std::size_t lidosB = LeBloco(*leitorB, blocoB);
        if (lidosA != lidosB || std::memcmp(blocoA.data(), blocoB.data(), lidosA) != 0) return false;
        if (lidosA < blocoA.size()) return true;
    }
}

/// Value of an integer or a decimal, trailing zeros aside.
const TDecimal* NumeroExato(const TValor& valor, TDecimal& espaco) {
    if (const auto* inteiro = valor.Se<std::int64_t>())
        espaco = {*inteiro, 0};
    else if (const auto* decimal = valor.Se<TDecimal>())
        espaco = SemZerosFinais(*decimal);
    else
        return nullptr;
    return &espaco;
}

}  // namespace

std::string TConteudo::Tudo() const {
    std::string tudo;
    std::array<char, 16384> bloco;
    const auto leitor = Abre();
    while (const std::size_t lidos = leitor->Le(bloco)) tudo.append(bloco.data(), lidos);
    return tudo;
}

bool TValor::Vazio() const {
    const auto* texto = Se<std::string>();
    return Nulo() || (texto && texto->empty());
}

bool TValor::EmBranco() const {
    const bool emTexto = Se<std::string>() || Se<TBytes>() || Se<TConteudoComum>();
    return Nulo() || (emTexto && Apara(ComoTexto()).empty());
}

std::string TValor::ComoTexto() const {
    return std::visit(TCasos{
                          [](std::monostate) { return std::string(); },
                          [](bool v) { return std::string(v ? "True" : "False"); },
                          [](std::int64_t v) { return std::to_string(v); },
                          [](TDecimal v) { return TextoDoDecimal(v); },
                          [](double v) { return TextoDoDouble(v); },
                          [](const std::string& v) { return v; },
                          [](const TBytes& v) { return TextoDeBytes(v.bytes); },
                          [](TData v) { return TextoDaData(v); },
                          [](THora v) { return TextoDaHora(v); },
                          [](TDataHora v) { return TextoDaDataHora(v); },
                          [](const TConteudoComum& v) { return TextoDeBytes(v->Tudo()); },
                      },
                      v_);
}

std::int64_t TValor::ComoInteiro() const {
    if (Nulo()) return 0;
    if (const auto* inteiro = Se<std::int64_t>()) return *inteiro;
    if (const auto* logico = Se<bool>()) return *logico;
    if (const auto* decimal = Se<TDecimal>()) return ParteInteira(*decimal);
    if (const auto* texto = Se<std::string>()) {
        if (Apara(*texto).empty()) return 0;
        if (const auto decimal = LeDecimal(*texto)) return ParteInteira(*decimal);
    }
    const auto inteiro = ParteInteira(ComoDouble());
    if (!inteiro) NaoEhNumero(*this);
    return *inteiro;
}

double TValor::ComoDouble() const {
    if (Nulo()) return 0;
    if (const auto* numero = Se<double>()) return *numero;
    if (const auto* inteiro = Se<std::int64_t>()) return static_cast<double>(*inteiro);
    if (const auto* logico = Se<bool>()) return *logico;
    if (!Se<TDecimal>() && !Se<std::string>()) NaoEhNumero(*this);
    const std::string texto = ComoTexto();
    if (Apara(texto).empty()) return 0;
    const auto lido = LeDouble(texto);
    if (!lido) NaoEhNumero(*this);
    return *lido;
}

std::string TValor::ComoBytes() const {
    if (const auto* bytes = Se<TBytes>()) return bytes->bytes;
    if (const auto* conteudo = Se<TConteudoComum>()) return (*conteudo)->Tudo();
    return ComoTexto();
}

bool TValor::operator==(const TValor& outro) const {
    TDecimal espaco, espacoDoOutro;
    if (const auto* numero = NumeroExato(*this, espaco)) {
        const auto* numeroDoOutro = NumeroExato(outro, espacoDoOutro);
        return numeroDoOutro && *numero == *numeroDoOutro;
    }
    const auto* a = Se<double>();
    const auto* b = outro.Se<double>();
    if (a && b && std::isnan(*a) && std::isnan(*b)) return true;
    if (v_.index() == outro.v_.index() && v_ == outro.v_) return true;
    return IguaisPorBytes(*this, outro);
}

}  // namespace wkd
