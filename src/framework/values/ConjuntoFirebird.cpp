#include "values/ConjuntoFirebird.h"

#include <algorithm>

#include "values/Erros.h"
#include "values/Texto.h"

namespace wkd {
namespace {

enum : int { csNone = 0, csOctets = 1, csAscii = 2, csUnicodeFss = 3, csUtf8 = 4, csIso8859_1 = 21, csWin1252 = 53 };

bool SoAscii(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string DeLatin1(std::string_view bytes) {
    std::string texto;
    texto.reserve(bytes.size() + bytes.size() / 8);
    for (const char c : bytes) {
        const auto codigo = static_cast<unsigned char>(c);
        if (codigo < 0x80) {
            texto += c;
        } else {
            texto += static_cast<char>(0xC0 | (codigo >> 6));
            texto += static_cast<char>(0x80 | (codigo & 0x3F));
        }
    }
    return texto;
}

std::string ParaLatin1(std::string_view utf8) {
    std::string bytes;
    bytes.reserve(utf8.size());
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto codigo = static_cast<unsigned char>(utf8[i]);
        if (codigo < 0x80) {
            bytes += utf8[i];
        } else if ((codigo == 0xC2 || codigo == 0xC3) && i + 1 < utf8.size()) {
            bytes += static_cast<char>(((codigo & 3) << 6) | (static_cast<unsigned char>(utf8[++i]) & 0x3F));
        } else {
            throw TErroConversao("o texto tem um caractere que não existe em ISO8859_1");
        }
    }
    return bytes;
}

}  // namespace

TConjunto ConjuntoDoNumero(int numero) {
    switch (numero) {
        case csNone:
        case csWin1252:
            return TConjunto::Win1252;
        case csOctets:
            return TConjunto::Octetos;
        case csAscii:
            return TConjunto::Ascii;
        case csUnicodeFss:
        case csUtf8:
            return TConjunto::Utf8;
        case csIso8859_1:
            return TConjunto::Iso8859_1;
        default:
            throw TErroConversao("o conjunto de caracteres número " + std::to_string(numero) +
                                 " só é lido por uma conexão UTF8 (CharacterSet=UTF8)");
    }
}

std::optional<TConjunto> ConjuntoDoNome(std::string_view nome) {
    static constexpr struct {
        std::string_view nome;
        TConjunto conjunto;
    } kNomes[] = {
        {"UTF8", TConjunto::Utf8},           {"UNICODE_FSS", TConjunto::Utf8}, {"UTF_FSS", TConjunto::Utf8},
        {"WIN1252", TConjunto::Win1252},     {"WIN_1252", TConjunto::Win1252}, {"NONE", TConjunto::Win1252},
        {"ISO8859_1", TConjunto::Iso8859_1}, {"LATIN1", TConjunto::Iso8859_1}, {"ISO88591", TConjunto::Iso8859_1},
        {"ASCII", TConjunto::Ascii},
    };
    for (const auto& linha : kNomes)
        if (IgualSemCaixa(linha.nome, nome)) return linha.conjunto;
    return std::nullopt;
}

int BytesPorCaractere(int numero) { return numero == csUtf8 ? 4 : numero == csUnicodeFss ? 3 : 1; }

std::string ParaUtf8(TConjunto conjunto, std::string_view bytes) {
    if (conjunto == TConjunto::Utf8 || conjunto == TConjunto::Octetos || SoAscii(bytes)) return std::string(bytes);
    return conjunto == TConjunto::Iso8859_1 ? DeLatin1(bytes) : De1252(bytes);
}

std::string DeUtf8(TConjunto conjunto, std::string_view utf8) {
    if (conjunto == TConjunto::Utf8 || conjunto == TConjunto::Octetos || SoAscii(utf8)) return std::string(utf8);
    if (conjunto == TConjunto::Ascii) throw TErroConversao("o texto tem um caractere que não existe em ASCII");
    return conjunto == TConjunto::Iso8859_1 ? ParaLatin1(utf8) : Para1252(utf8);
}

}  // namespace wkd
