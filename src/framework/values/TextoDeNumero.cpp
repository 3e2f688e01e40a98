#include "values/TextoDeNumero.h"

#include <array>
#include <charconv>
#include <cmath>

#include "values/Texto.h"

namespace wkd {

namespace {

constexpr int kEscalaMaxima = 18;

std::string_view SemSinalMais(std::string_view texto) {
    texto = Apara(texto);
    if (texto.size() > 1 && texto[0] == '+' && texto[1] != '-') texto.remove_prefix(1);
    return texto;
}

template <class T>
std::optional<T> LeTudo(std::string_view texto) {
    T numero{};
    const auto fim = texto.data() + texto.size();
    const auto [parou, erro] = std::from_chars(texto.data(), fim, numero);
    if (erro != std::errc() || parou != fim) return std::nullopt;
    return numero;
}

bool Digito(char c) { return c >= '0' && c <= '9'; }

/// Digits of a number apart from the place of its decimal point.
struct TDigitos {
    std::string digitos;
    int escala = 0;
};

/// "12.50" as digits "1250" and scale 2.
std::optional<TDigitos> LeDigitos(std::string_view texto) {
    TDigitos lido;
    bool separador = false;
    for (char c : texto) {
        if (Digito(c)) {
            lido.digitos += c;
            lido.escala += separador;
        } else if ((c == '.' || c == ',') && !separador) {
            separador = true;
        } else {
            return std::nullopt;
        }
    }
    if (lido.digitos.empty()) return std::nullopt;
    return lido;
}

/// Brings the scale into 0 to 18; false when digits would be lost or the number is far too large.
bool AjustaEscala(TDigitos& numero) {
    while (numero.escala > kEscalaMaxima && numero.digitos.size() > 1 && numero.digitos.back() == '0') {
        numero.digitos.pop_back();
        --numero.escala;
    }
    const bool zero = numero.digitos.find_first_not_of('0') == std::string::npos;
    if (zero && (numero.escala < 0 || numero.escala > kEscalaMaxima)) numero = {"0", 0};
    if (numero.escala > kEscalaMaxima || numero.escala < -kEscalaMaxima) return false;
    for (; numero.escala < 0; ++numero.escala) numero.digitos += '0';
    return true;
}

}  // namespace

std::string TextoDoDecimal(TDecimal numero) {
    std::string texto = std::to_string(numero.valor);
    if (numero.escala <= 0) return texto;
    const std::size_t sinal = numero.valor < 0;
    const auto casas = static_cast<std::size_t>(numero.escala);
    if (texto.size() - sinal <= casas) texto.insert(sinal, casas + 1 - (texto.size() - sinal), '0');
    return texto.insert(texto.size() - casas, ".");
}

std::string TextoDoDouble(double numero) {
    if (std::isnan(numero)) return "nan";
    std::array<char, 32> espaco;
    const auto fim = std::to_chars(espaco.data(), espaco.data() + espaco.size(), numero).ptr;
    return std::string(espaco.data(), fim);
}

std::optional<std::int64_t> LeInteiro(std::string_view texto) { return LeTudo<std::int64_t>(SemSinalMais(texto)); }

std::optional<TDecimal> LeDecimal(std::string_view texto) {
    texto = SemSinalMais(texto);
    const bool negativo = !texto.empty() && texto[0] == '-';
    if (negativo) texto.remove_prefix(1);
    const auto lugarExpoente = texto.find_first_of("eE");
    auto lido = LeDigitos(texto.substr(0, lugarExpoente));
    if (!lido) return std::nullopt;
    if (lugarExpoente != std::string_view::npos) {
        const auto expoente = LeTudo<std::int16_t>(SemSinalMais(texto.substr(lugarExpoente + 1)));
        if (!expoente) return std::nullopt;
        lido->escala -= *expoente;
    }
    if (!AjustaEscala(*lido)) return std::nullopt;
    const auto valor = LeTudo<std::int64_t>((negativo ? "-" : "") + lido->digitos);
    if (!valor) return std::nullopt;
    return TDecimal{*valor, lido->escala};
}

std::optional<double> LeDouble(std::string_view texto) {
    std::string comPonto(SemSinalMais(texto));
    if (comPonto.find('.') == std::string::npos)
        if (const auto virgula = comPonto.find(','); virgula != std::string::npos) comPonto[virgula] = '.';
    return LeTudo<double>(comPonto);
}

TDecimal SemZerosFinais(TDecimal numero) {
    for (; numero.escala > 0 && numero.valor % 10 == 0; --numero.escala) numero.valor /= 10;
    return numero;
}

std::optional<std::int64_t> ParteInteira(double numero) {
    constexpr double kLimite = 9223372036854775808.0;  // 2^63
    if (!(numero >= -kLimite && numero < kLimite)) return std::nullopt;
    return static_cast<std::int64_t>(numero);
}

std::int64_t ParteInteira(TDecimal numero) {
    for (int i = 0; i < numero.escala; ++i) numero.valor /= 10;
    return numero.valor;
}

}  // namespace wkd
