#include "Bcd.h"

#include <algorithm>
#include <charconv>

namespace wkd {

namespace {

constexpr unsigned kNegativo = 0x80, kEmBranco = 0x40, kCasas = 0x3F;

bool SoDigitos(std::string_view texto) {
    return std::all_of(texto.begin(), texto.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::string_view SemZeros(std::string_view digitos) {
    return digitos.substr(std::min(digitos.find_first_not_of('0'), digitos.size()));
}

unsigned Meio(std::string_view bytes, std::size_t posicao) {
    const auto byte = static_cast<unsigned char>(bytes[posicao / 2]);
    return posicao % 2 == 0 ? byte >> 4 : byte & 0xF;
}

}  // namespace

std::string TDigitos::Texto() const {
    std::string texto(SemZeros(digitos));
    const auto casas = static_cast<std::size_t>(escala);
    if (texto.size() <= casas) texto.insert(0, casas + 1 - texto.size(), '0');
    if (casas > 0) texto.insert(texto.size() - casas, ".");
    return negativo ? "-" + texto : texto;
}

TValor TDigitos::Valor() const {
    constexpr int kMaiorEscala = 18;
    const auto inteiro = (negativo ? "-" : "") + std::string(SemZeros(digitos));
    std::int64_t valor = 0;
    const auto lido = std::from_chars(inteiro.data(), inteiro.data() + inteiro.size(), valor);
    const bool zero = SemZeros(digitos).empty();
    if (escala > kMaiorEscala || (lido.ec != std::errc() && !zero)) return TValor(Texto());
    return TValor(TDecimal{zero ? 0 : valor, escala});
}

std::size_t TDigitos::Precisao() const {
    return std::max<std::size_t>({1, SemZeros(digitos).size(), static_cast<std::size_t>(escala)});
}

std::optional<TDigitos> DigitosDeTexto(std::string_view texto) {
    constexpr std::size_t kMaior = 400;
    TDigitos numero;
    numero.negativo = texto.starts_with('-');
    if (numero.negativo || texto.starts_with('+')) texto.remove_prefix(1);
    const auto ponto = std::min(texto.find('.'), texto.size());
    numero.digitos = texto.substr(0, ponto);
    if (ponto < texto.size()) {
        const auto casas = texto.substr(ponto + 1);
        numero.digitos += casas;
        numero.escala = static_cast<int>(std::min(casas.size(), kMaior));
    }
    if (numero.digitos.empty() || numero.digitos.size() > kMaior || !SoDigitos(numero.digitos)) return std::nullopt;
    return numero;
}

std::optional<TValor> ValorDeBcd(std::string_view bytes, std::string& causa) {
    const std::size_t precisao = static_cast<unsigned char>(bytes[0]);
    const unsigned sinal = static_cast<unsigned char>(bytes[1]);
    const std::size_t casas = sinal & kCasas;
    if (sinal & kEmBranco) return TValor();
    causa = "decimal com precisão " + std::to_string(precisao) + " e " + std::to_string(casas) + " casas";
    if (precisao > kMaiorPrecisao || casas > precisao || precisao > 2 * (bytes.size() - 2)) return std::nullopt;
    TDigitos numero{(sinal & kNegativo) != 0, {}, static_cast<int>(casas)};
    for (std::size_t i = 0; i < precisao; ++i) {
        const unsigned digito = Meio(bytes.substr(2), i);
        causa = "decimal com algarismo " + std::to_string(digito);
        if (digito > 9) return std::nullopt;
        numero.digitos += static_cast<char>('0' + digito);
    }
    if (numero.digitos.empty()) numero.digitos = "0";
    return numero.Valor();
}

std::optional<std::string> BcdDeDigitos(const TDigitos& numero, std::size_t tamanho) {
    const std::size_t precisao = numero.Precisao();
    if (precisao > kMaiorPrecisao || tamanho < 2 || precisao > 2 * (tamanho - 2)) return std::nullopt;
    std::string digitos(SemZeros(numero.digitos));
    digitos.insert(0, precisao - digitos.size(), '0');
    std::string bytes(tamanho, '\0');
    bytes[0] = static_cast<char>(precisao);
    bytes[1] = static_cast<char>((numero.negativo ? kNegativo : 0) | static_cast<unsigned>(numero.escala));
    for (std::size_t i = 0; i < precisao; ++i) {
        const int digito = digitos[i] - '0';
        bytes[2 + i / 2] = static_cast<char>(bytes[2 + i / 2] | (i % 2 == 0 ? digito << 4 : digito));
    }
    return bytes;
}

}  // namespace wkd
