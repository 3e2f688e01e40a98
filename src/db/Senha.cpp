#include "Senha.h"

#include <cstdint>
#include <optional>

#include "Texto.h"

namespace wkd {

namespace {

// "W1-" and, in hexadecimal, the bytes of the password and of its check number, each xored with a stream of bytes
// that begins at the user name.
constexpr std::string_view kMarca = "W1-";
constexpr std::size_t kBytesDeConferencia = 4;
constexpr std::string_view kHexadecimal = "0123456789ABCDEF";

/// FNV-1a.
std::uint32_t Resumo(std::string_view texto) {
    std::uint32_t resumo = 2166136261u;
    for (const char c : texto) resumo = (resumo ^ static_cast<unsigned char>(c)) * 16777619u;
    return resumo;
}

std::string Conferencia(std::string_view senha) {
    std::string bytes;
    for (std::size_t i = 0; i < kBytesDeConferencia; ++i) bytes += static_cast<char>(Resumo(senha) >> (8 * i) & 0xFF);
    return bytes;
}

/// Its own inverse.
std::string Embaralha(std::string_view usuario, std::string bytes) {
    std::uint32_t estado = Resumo(Maiusculas(Apara(usuario))) | 1u;
    for (char& c : bytes) {  // xorshift32
        estado ^= estado << 13;
        estado ^= estado >> 17;
        estado ^= estado << 5;
        c = static_cast<char>(c ^ static_cast<char>(estado >> 24));
    }
    return bytes;
}

std::string ParaHexadecimal(std::string_view bytes) {
    std::string texto;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        texto += kHexadecimal[byte >> 4];
        texto += kHexadecimal[byte & 0xF];
    }
    return texto;
}

std::optional<std::string> DeHexadecimal(std::string_view texto) {
    if (texto.size() % 2 != 0) return std::nullopt;
    std::string bytes;
    for (std::size_t i = 0; i < texto.size(); i += 2) {
        const std::size_t alto = kHexadecimal.find(texto[i]);
        const std::size_t baixo = kHexadecimal.find(texto[i + 1]);
        if (alto == std::string_view::npos || baixo == std::string_view::npos) return std::nullopt;
        bytes += static_cast<char>(alto << 4 | baixo);
    }
    return bytes;
}

}  // namespace

std::string MontaSenha(std::string_view usuario, std::string_view senha) {
    if (senha.empty()) return {};
    return std::string(kMarca) + ParaHexadecimal(Embaralha(usuario, Conferencia(senha) + std::string(senha)));
}

std::string DesmontaSenha(std::string_view usuario, std::string_view texto) {
    if (!texto.starts_with(kMarca)) return std::string(texto);
    const auto bytes = DeHexadecimal(texto.substr(kMarca.size()));
    if (!bytes || bytes->size() <= kBytesDeConferencia) return std::string(texto);
    const std::string claro = Embaralha(usuario, *bytes);
    const std::string senha = claro.substr(kBytesDeConferencia);
    return claro.starts_with(Conferencia(senha)) ? senha : std::string(texto);
}

}  // namespace wkd
