#include "values/Texto.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <optional>
#include <stdexcept>

#include "values/Erros.h"

namespace wkd {

namespace {

char Maiuscula(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }
char Minuscula(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
bool Branco(char c) { return static_cast<unsigned char>(c) <= 0x20; }

}  // namespace

std::string Maiusculas(std::string_view texto) {
    std::string resultado(texto);
    std::transform(resultado.begin(), resultado.end(), resultado.begin(), Maiuscula);
    return resultado;
}

std::string Minusculas(std::string_view texto) {
    std::string resultado(texto);
    std::transform(resultado.begin(), resultado.end(), resultado.begin(), Minuscula);
    return resultado;
}

std::string_view Apara(std::string_view texto) {
    while (!texto.empty() && Branco(texto.front())) texto.remove_prefix(1);
    while (!texto.empty() && Branco(texto.back())) texto.remove_suffix(1);
    return texto;
}

std::string_view AparaFim(std::string_view texto) {
    while (!texto.empty() && texto.back() == ' ') texto.remove_suffix(1);
    return texto;
}

bool IgualSemCaixa(std::string_view a, std::string_view b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return Maiuscula(x) == Maiuscula(y); });
}

std::string ChaveDeNome(std::string_view nome) { return Maiusculas(AparaFim(nome)); }

bool NomeDeSql(std::string_view nome) {
    const auto serve = [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '$';
    };
    return !nome.empty() && std::all_of(nome.begin(), nome.end(), serve);
}

bool DoCliente(std::string_view nome) { return IgualSemCaixa(nome.substr(0, 2), "U_"); }

std::string RecusaDoNome(std::string_view onde, std::string_view nome) {
    constexpr std::size_t kMostra = 80;
    const bool longo = nome.size() > kMostra;
    const auto inicio = longo ? nome.substr(0, CaracteresInteiros(nome.substr(0, kMostra))) : nome;
    return std::string(onde) + ": linha ignorada, o nome '" + std::string(inicio) + (longo ? "..." : "") +
           "' só pode ter letras sem acento, algarismos, \"_\" e \"$\". Corrija o nome e rode de novo.";
}

std::string Aspas(std::string_view texto) { return "'" + Troca(texto, "'", "''") + "'"; }

std::string Troca(std::string_view texto, std::string_view de, std::string_view para) {
    if (de.empty()) throw std::invalid_argument("Troca: texto procurado vazio");
    std::string resultado;
    for (;;) {
        const auto achado = texto.find(de);
        resultado += texto.substr(0, achado);
        if (achado == std::string_view::npos) return resultado;
        resultado += para;
        texto.remove_prefix(achado + de.size());
    }
}

std::vector<std::string> Divide(std::string_view texto, char separador) {
    std::vector<std::string> partes;
    if (texto.empty()) return partes;
    for (;;) {
        const auto achado = texto.find(separador);
        partes.emplace_back(texto.substr(0, achado));
        if (achado == std::string_view::npos) return partes;
        texto.remove_prefix(achado + 1);
    }
}

std::string Junta(const std::vector<std::string>& partes, std::string_view separador) {
    std::string resultado;
    for (std::size_t i = 0; i < partes.size(); ++i) {
        if (i > 0) resultado += separador;
        resultado += partes[i];
    }
    return resultado;
}

std::string ComandoInsere(std::string_view tabela, const std::vector<std::string>& colunas,
                          std::vector<std::string> valores) {
    const std::string inicio = "insert into " + std::string(tabela);
    if (colunas.empty()) return inicio + " default values";
    for (std::size_t i = valores.size(); i < colunas.size(); ++i) valores.push_back(":p" + std::to_string(i));
    return inicio + " (" + Junta(colunas, ", ") + ") values (" + Junta(valores, ", ") + ")";
}

namespace {

// Code points of the bytes 0x80 to 0x9F; every other byte is its own code point.
constexpr std::array<char32_t, 32> k1252 = {0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                            0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x8D,   0x017D, 0x8F,
                                            0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                            0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};

void AcrescentaUtf8(std::string& destino, char32_t c) {
    if (c < 0x80) {
        destino += static_cast<char>(c);
    } else if (c < 0x800) {
        destino += static_cast<char>(0xC0 | (c >> 6));
        destino += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        if (c >= 0x10000) destino += static_cast<char>(0xF0 | (c >> 18));
        destino += static_cast<char>(c < 0x10000 ? 0xE0 | (c >> 12) : 0x80 | ((c >> 12) & 0x3F));
        destino += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        destino += static_cast<char>(0x80 | (c & 0x3F));
    }
}

/// Takes one character off the start of `texto`; nothing, and `texto` as it was, when it is no valid UTF-8.
std::optional<char32_t> TiraCaractere(std::string_view& texto) {
    const auto primeiro = static_cast<unsigned char>(texto.front());
    const std::size_t bytes = primeiro < 0x80   ? 1
                              : primeiro < 0xC2 ? 0
                              : primeiro < 0xE0 ? 2
                              : primeiro < 0xF0 ? 3
                              : primeiro < 0xF5 ? 4
                                                : 0;
    if (bytes == 0 || bytes > texto.size()) return std::nullopt;
    char32_t c = bytes == 1 ? primeiro : primeiro & (0x7Fu >> bytes);
    for (std::size_t i = 1; i < bytes; ++i) {
        const auto byte = static_cast<unsigned char>(texto[i]);
        if ((byte & 0xC0) != 0x80) return std::nullopt;
        c = (c << 6) | (byte & 0x3F);
    }
    const bool longoDemais = (bytes == 3 && c < 0x800) || (bytes == 4 && c < 0x10000);
    if (longoDemais || (c >= 0xD800 && c <= 0xDFFF) || c > 0x10FFFF) return std::nullopt;
    texto.remove_prefix(bytes);
    return c;
}

/// Bytes of ASCII at the start, many at a time.
std::size_t TamanhoDoAscii(std::string_view bytes) {
    std::size_t tamanho = 0;
    for (std::array<std::uint64_t, 4> bloco; tamanho + sizeof bloco <= bytes.size(); tamanho += sizeof bloco) {
        std::memcpy(bloco.data(), bytes.data() + tamanho, sizeof bloco);
        if ((bloco[0] | bloco[1] | bloco[2] | bloco[3]) & 0x8080808080808080ULL) break;
    }
    while (tamanho < bytes.size() && static_cast<unsigned char>(bytes[tamanho]) < 0x80) ++tamanho;
    return tamanho;
}

std::optional<char> Byte1252(char32_t c) {
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) return static_cast<char>(c);
    const auto achado = std::find(k1252.begin(), k1252.end(), c);
    if (achado == k1252.end()) return std::nullopt;
    return static_cast<char>(0x80 + std::distance(k1252.begin(), achado));
}

}  // namespace

bool Utf8Valido(std::string_view bytes) {
    while (bytes.remove_prefix(TamanhoDoAscii(bytes)), !bytes.empty())
        if (!TiraCaractere(bytes)) return false;
    return true;
}

std::string De1252(std::string_view bytes) {
    std::string utf8;
    utf8.reserve(bytes.size());
    for (char byte : bytes) {
        const auto b = static_cast<unsigned char>(byte);
        AcrescentaUtf8(utf8, b >= 0x80 && b < 0xA0 ? k1252[b - 0x80] : b);
    }
    return utf8;
}

std::string Para1252(std::string_view utf8) {
    std::string bytes;
    bytes.reserve(utf8.size());
    while (!utf8.empty()) {
        const std::string_view resto = utf8;
        const auto c = TiraCaractere(utf8);
        if (!c) throw TErroConversao("Texto não é UTF-8 válido");
        const auto byte = Byte1252(*c);
        if (!byte) {
            const auto caractere = resto.substr(0, resto.size() - utf8.size());
            throw TErroConversao("O caractere \"" + std::string(caractere) + "\" não existe em Windows-1252");
        }
        bytes += *byte;
    }
    return bytes;
}

std::string TextoDeBytes(std::string_view bytes) { return Utf8Valido(bytes) ? std::string(bytes) : De1252(bytes); }

std::size_t CaracteresInteiros(std::string_view utf8) {
    for (std::size_t atras = 1; atras <= std::min<std::size_t>(3, utf8.size()); ++atras) {
        const auto c = static_cast<unsigned char>(utf8[utf8.size() - atras]);
        if ((c & 0xC0) == 0x80) continue;
        const std::size_t precisa = c >= 0xF0 ? 4 : c >= 0xE0 ? 3 : c >= 0xC0 ? 2 : 1;
        return precisa > atras ? utf8.size() - atras : utf8.size();
    }
    return utf8.size();
}

std::u16string TextoLargo(std::string_view utf8) {
    if (!Utf8Valido(utf8)) return TextoLargo(De1252(utf8));
    std::u16string utf16;
    utf16.reserve(utf8.size());
    while (!utf8.empty()) {
        const char32_t c = *TiraCaractere(utf8);
        if (c < 0x10000) {
            utf16 += static_cast<char16_t>(c);
        } else {
            utf16 += static_cast<char16_t>(0xD7C0 + (c >> 10));
            utf16 += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
        }
    }
    return utf16;
}

std::string TextoEstreito(std::u16string_view utf16) {
    std::string utf8;
    utf8.reserve(utf16.size());
    for (std::size_t i = 0; i < utf16.size(); ++i) {
        const char16_t c = utf16[i];
        const char16_t seguinte = i + 1 < utf16.size() ? utf16[i + 1] : u'\0';
        if (c < 0xD800 || c > 0xDFFF) {
            AcrescentaUtf8(utf8, c);
        } else if (c < 0xDC00 && seguinte >= 0xDC00 && seguinte <= 0xDFFF) {
            AcrescentaUtf8(utf8, 0x10000u + ((c - 0xD800u) << 10) + (seguinte - 0xDC00u));
            ++i;
        } else {
            AcrescentaUtf8(utf8, 0xFFFD);
        }
    }
    return utf8;
}

}  // namespace wkd
