#include "values/Valor.h"

#include <array>
#include <cmath>
#include <cstring>
#include <optional>

#include "values/Erros.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"
#include "values/TextoDeNumero.h"

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

namespace {

using TConteudoComum = std::shared_ptr<const TConteudo>;
/// The converted value, or nothing when it does not convert.
using TConvertido = std::optional<TValor>;

const TData kDiaDasHoras = DataDe(1899, 12, 30);  // day of a time stored as date and time
const TData kDiaDasHorasSqlServer = DataDe(1900, 1, 1);

template <class T>
TConvertido Lido(const std::optional<T>& lido) {
    if (!lido) return std::nullopt;
    return TValor(*lido);
}

TConvertido ParaInteiro(const TValor& v) {
    if (v.Se<std::int64_t>()) return v;
    if (const auto* logico = v.Se<bool>()) return TValor(std::int64_t{*logico});
    if (const auto* numero = v.Se<double>()) {
        if (std::trunc(*numero) != *numero) return std::nullopt;
        return Lido(ParteInteira(*numero));
    }
    std::optional<TDecimal> decimal;
    if (const auto* d = v.Se<TDecimal>())
        decimal = *d;
    else if (const auto* texto = v.Se<std::string>())
        decimal = LeDecimal(*texto);
    if (!decimal) return std::nullopt;
    const TDecimal reduzido = SemZerosFinais(*decimal);
    if (reduzido.escala > 0) return std::nullopt;
    return TValor(reduzido.valor);
}

TConvertido ParaDecimal(const TValor& v) {
    if (v.Se<TDecimal>()) return v;
    if (const auto* inteiro = v.Se<std::int64_t>()) return TValor(TDecimal{*inteiro, 0});
    if (const auto* logico = v.Se<bool>()) return TValor(TDecimal{*logico, 0});
    if (v.Se<double>() || v.Se<std::string>()) return Lido(LeDecimal(v.ComoTexto()));
    return std::nullopt;
}

/// A decimal or a text becomes the nearest double; an integer only when the double holds it exactly.
TConvertido ParaFlutuante(const TValor& v) {
    if (v.Se<double>()) return v;
    if (const auto* inteiro = v.Se<std::int64_t>()) {
        const auto numero = static_cast<double>(*inteiro);
        if (ParteInteira(numero) != *inteiro) return std::nullopt;
        return TValor(numero);
    }
    if (v.Se<bool>()) return TValor(v.ComoDouble());
    if (v.Se<TDecimal>() || v.Se<std::string>()) return Lido(LeDouble(v.ComoTexto()));
    return std::nullopt;
}

TConvertido LogicoDoTexto(std::string_view texto) {
    const std::string maiusculo = Maiusculas(Apara(texto));
    for (const auto* verdadeiro : {"T", "TRUE", "S", "SIM", "1"})
        if (maiusculo == verdadeiro) return TValor(true);
    for (const auto* falso : {"F", "FALSE", "N", "NAO", "0"})
        if (maiusculo == falso) return TValor(false);
    return std::nullopt;
}

TConvertido ParaLogico(const TValor& v) {
    if (v.Se<bool>()) return v;
    if (const auto* texto = v.Se<std::string>()) return LogicoDoTexto(*texto);
    const TConvertido inteiro = ParaInteiro(v);
    if (inteiro == TValor(0)) return TValor(false);
    if (inteiro == TValor(1)) return TValor(true);
    return std::nullopt;
}

TConvertido ParaDataHora(const TValor& v) {
    if (v.Se<TDataHora>()) return v;
    if (const auto* data = v.Se<TData>()) return TValor(TDataHora{*data, {}});
    if (const auto* hora = v.Se<THora>()) return TValor(TDataHora{kDiaDasHoras, *hora});
    if (const auto* texto = v.Se<std::string>()) return Lido(LeDataHora(*texto));
    return std::nullopt;
}

TConvertido ParaData(const TValor& v) {
    if (v.Se<TData>()) return v;
    if (v.Se<THora>()) return std::nullopt;
    const TConvertido dataHora = ParaDataHora(v);
    if (!dataHora) return std::nullopt;
    const auto quando = *dataHora->Se<TDataHora>();
    if (quando.hora != THora{}) return std::nullopt;
    return TValor(quando.data);
}

TConvertido ParaHora(const TValor& v) {
    if (v.Se<THora>()) return v;
    if (v.Se<TData>()) return std::nullopt;
    if (const auto* texto = v.Se<std::string>())
        if (const auto hora = LeHora(*texto)) return TValor(*hora);
    const TConvertido dataHora = ParaDataHora(v);
    if (!dataHora) return std::nullopt;
    const auto quando = *dataHora->Se<TDataHora>();
    if (quando.data != kDiaDasHoras && quando.data != kDiaDasHorasSqlServer) return std::nullopt;
    return TValor(quando.hora);
}

TConvertido ParaBlob(const TValor& v) {
    if (v.Se<TBytes>() || v.Se<TConteudoComum>() || v.Se<std::string>()) return v;
    return TValor(v.ComoTexto());
}

TConvertido ParaTipo(const TValor& v, TTipoDado tipo) {
    switch (tipo) {
        case TTipoDado::Texto:
            return TValor(v.ComoTexto());
        case TTipoDado::Inteiro:
            return ParaInteiro(v);
        case TTipoDado::Decimal:
            return ParaDecimal(v);
        case TTipoDado::Flutuante:
            return ParaFlutuante(v);
        case TTipoDado::Logico:
            return ParaLogico(v);
        case TTipoDado::Data:
            return ParaData(v);
        case TTipoDado::Hora:
            return ParaHora(v);
        case TTipoDado::DataHora:
            return ParaDataHora(v);
        case TTipoDado::Memo:
        case TTipoDado::Blob:
            return ParaBlob(v);
        case TTipoDado::Bytes:
            return TValor(TBytes{v.ComoBytes()});
    }
    return std::nullopt;
}

bool AceitaVazio(TTipoDado tipo) {
    return tipo == TTipoDado::Texto || tipo == TTipoDado::Memo || tipo == TTipoDado::Blob || tipo == TTipoDado::Bytes;
}

std::string_view NomeDoTipo(TTipoDado tipo) {
    constexpr std::string_view kNomes[] = {"texto", "inteiro",   "decimal", "número", "lógico", "data",
                                           "hora",  "data/hora", "blob",    "memo",   "bytes"};
    return kNomes[static_cast<std::size_t>(tipo)];
}

/// At most some 200 bytes, cut between characters.
std::string Inicio(std::string texto) {
    std::size_t fim = 200;
    if (texto.size() <= fim) return texto;
    while ((static_cast<unsigned char>(texto[fim]) & 0xC0) == 0x80) --fim;
    return texto.erase(fim) + "...";
}

}  // namespace

TValor TValor::Converte(TTipoDado tipo) const {
    if (Nulo()) return {};
    if (tipo == TTipoDado::Texto && Se<std::string>()) return *this;
    const bool blob = Se<TBytes>() || Se<TConteudoComum>();
    if (blob && !AceitaVazio(tipo)) return TValor(ComoTexto()).Converte(tipo);
    if (!AceitaVazio(tipo) && EmBranco()) return {};
    if (auto convertido = ParaTipo(*this, tipo)) return *std::move(convertido);
    NaoSeConverte(tipo);
}

void TValor::NaoSeConverte(TTipoDado tipo) const {
    throw TErroConversao("\"" + Inicio(ComoTexto()) + "\" não se converte em " + std::string(NomeDoTipo(tipo)));
}

}  // namespace wkd
