#include "ValorXml.h"

#include <charconv>
#include <optional>

#include "Bcd.h"
#include "ConteudoPacote.h"
#include "DatasPacote.h"
#include "Texto.h"

namespace wkd {

namespace {

template <class T>
std::optional<T> Numero(std::string_view texto) {
    T numero{};
    const auto lido = std::from_chars(texto.data(), texto.data() + texto.size(), numero);
    if (lido.ec != std::errc() || lido.ptr != texto.data() + texto.size()) return std::nullopt;
    return numero;
}

std::optional<TValor> Inteiro(std::string_view texto, int bytes) {
    const auto numero = Numero<std::int64_t>(texto);
    const std::int64_t maior = INT64_MAX >> (64 - 8 * bytes);
    if (!numero || *numero > maior || *numero < -maior - 1) return std::nullopt;
    return TValor(*numero);
}

/// A negative number stands for the unsigned one of the same bits.
std::optional<TValor> SemSinal(std::string_view texto, int bytes) {
    const std::uint64_t maior = UINT64_MAX >> (64 - 8 * bytes);
    std::optional<std::uint64_t> numero = Numero<std::uint64_t>(texto);
    if (texto.starts_with('-') && Inteiro(texto, bytes))
        numero = static_cast<std::uint64_t>(*Numero<std::int64_t>(texto)) & maior;
    if (!numero || *numero > maior) return std::nullopt;
    if (*numero > static_cast<std::uint64_t>(INT64_MAX)) return TValor(std::to_string(*numero));
    return TValor(static_cast<std::int64_t>(*numero));
}

std::optional<TValor> Logico(std::string_view texto) {
    if (IgualSemCaixa(texto, "TRUE")) return TValor(true);
    if (IgualSemCaixa(texto, "FALSE")) return TValor(false);
    return std::nullopt;
}

std::optional<TValor> Flutuante(std::string_view texto, int bytes) {
    if (bytes != 4) {
        const auto numero = Numero<double>(texto);
        return numero ? std::optional<TValor>(*numero) : std::nullopt;
    }
    const auto numero = Numero<float>(texto);
    return numero ? std::optional<TValor>(static_cast<double>(*numero)) : std::nullopt;
}

std::optional<TValor> Decimal(std::string_view texto) {
    const auto numero = DigitosDeTexto(texto);
    return numero ? std::optional<TValor>(numero->Valor()) : std::nullopt;
}

std::optional<TValor> Data(std::string_view texto) {
    const auto quando = DataHoraDeXml(texto);
    if (!quando || quando->hora.tiques != 0) return std::nullopt;
    return TValor(quando->data);
}

template <class T>
std::optional<TValor> Opcional(const std::optional<T>& valor) {
    return valor ? std::optional<TValor>(*valor) : std::nullopt;
}

bool Texto(TFormato formato) { return formato == TFormato::TextoAnsi || formato == TFormato::TextoUnicode; }

}  // namespace

std::optional<TValor> ValorDoTexto(const TTipoPacote& tipo, std::string_view texto) {
    switch (tipo.formato) {
        case TFormato::Inteiro:
            return Inteiro(texto, tipo.tamanho);
        case TFormato::SemSinal:
            return SemSinal(texto, tipo.tamanho);
        case TFormato::Logico:
            return Logico(texto);
        case TFormato::Flutuante:
            return Flutuante(texto, tipo.tamanho);
        case TFormato::Bcd:
            return Decimal(texto);
        case TFormato::Data:
            return Data(texto);
        case TFormato::Hora:
            return Opcional(HoraDeXml(texto));
        default:
            return Opcional(DataHoraDeXml(texto));
    }
}

TValor ValorDeXml(const std::shared_ptr<const TFontePacote>& fonte, const TColunaXml& coluna, std::string_view bruto,
                  std::size_t campo) {
    if (Texto(coluna.tipo->formato)) return Decodifica(coluna.codigo, bruto);
    if (bruto.empty()) return {};
    if (coluna.tipo->formato == TFormato::Blob) return ValorDeBlob(fonte, bruto, coluna.codigo, campo, coluna.dado);
    constexpr std::size_t kMaiorNumero = 1000;
    const auto texto = Decodifica(coluna.codigo, bruto.substr(0, kMaiorNumero));
    if (auto valor = bruto.size() > kMaiorNumero ? std::nullopt : ValorDoTexto(*coluna.tipo, Apara(texto)))
        return *valor;
    constexpr std::size_t kMostra = 40;
    throw TErroTrecho{bruto.data(), "o valor '" + TextoDeBytes(bruto.substr(0, kMostra)) + "' não é do tipo " +
                                        std::string(coluna.tipo->xml)};
}

}  // namespace wkd
