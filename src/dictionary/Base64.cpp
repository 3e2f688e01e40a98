#include "Base64.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "Codigos.h"

namespace wkd {

namespace {

constexpr std::string_view kAlfabeto = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kEnchimento = 64, kBranco = 65, kReferencia = 66, kInvalido = 0xFF;

constexpr std::array<std::uint8_t, 256> Tabela() {
    std::array<std::uint8_t, 256> tabela{};
    tabela.fill(kInvalido);
    for (std::size_t i = 0; i < kAlfabeto.size(); ++i)
        tabela[static_cast<unsigned char>(kAlfabeto[i])] = static_cast<std::uint8_t>(i);
    for (const char branco : {' ', '\t', '\r', '\n'}) tabela[static_cast<unsigned char>(branco)] = kBranco;
    tabela['='] = kEnchimento;
    tabela['&'] = kReferencia;
    return tabela;
}
constexpr auto kTabela = Tabela();

std::uint8_t Classe(char c) { return kTabela[static_cast<unsigned char>(c)]; }

/// Next sign that is no white space; kBranco at the end.
std::uint8_t Proximo(std::string_view texto, std::size_t& posicao) {
    while (posicao < texto.size()) {
        std::uint8_t classe = Classe(texto[posicao]);
        std::size_t tamanho = 1;
        if (classe == kReferencia) {
            const char32_t c = LeReferencia(texto.substr(posicao), tamanho);
            classe = c < 0x80 && c != U'&' ? Classe(static_cast<char>(c)) : kInvalido;
        }
        if (classe == kInvalido) throw TErroTrecho{texto.data() + posicao, "conteúdo binário com sinal fora do Base64"};
        posicao += tamanho;
        if (classe != kBranco) return classe;
    }
    return kBranco;
}

void Acrescenta(std::string& saida, std::uint32_t grupo, int bytes) {
    for (int i = 0; i < bytes; ++i) saida += static_cast<char>(grupo >> (16 - 8 * i));
}

/// Groups of four signs without white space or padding, three bytes each; the quick way through most of the text.
std::size_t GruposSimples(std::string_view texto, std::string& saida, std::size_t posicao, std::size_t limite) {
    const std::size_t fim = std::min(limite, texto.size());
    for (; posicao + 4 <= fim; posicao += 4) {
        const std::uint32_t a = Classe(texto[posicao]), b = Classe(texto[posicao + 1]);
        const std::uint32_t c = Classe(texto[posicao + 2]), d = Classe(texto[posicao + 3]);
        if ((a | b | c | d) > 63) break;
        Acrescenta(saida, a << 18 | b << 12 | c << 6 | d, 3);
    }
    return posicao;
}

/// One group, white space skipped. False at the end of the text.
bool GrupoQualquer(std::string_view texto, std::string& saida, std::size_t& posicao) {
    const TErroTrecho incompleto{texto.data() + posicao, "conteúdo binário (Base64) incompleto"};
    std::uint32_t grupo = 0;
    int sinais = 0, enchimento = 0;
    for (; sinais < 4; ++sinais) {
        const auto sinal = Proximo(texto, posicao);
        if (sinal == kBranco && sinais == 0) return false;
        if (sinal == kBranco || (sinal == kEnchimento && sinais < 2) || (sinal != kEnchimento && enchimento > 0))
            throw incompleto;
        enchimento += sinal == kEnchimento;
        grupo = grupo << 6 | (sinal & 63);
    }
    Acrescenta(saida, grupo, 3 - enchimento);
    if (enchimento > 0 && Proximo(texto, posicao) != kBranco) throw incompleto;
    return enchimento == 0;
}

}  // namespace

std::string ParaBase64(std::string_view bytes) {
    std::string texto;
    texto.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const auto parte = bytes.substr(i, 3);
        std::uint32_t grupo = 0;
        for (std::size_t j = 0; j < 3; ++j)
            grupo = grupo << 8 | (j < parte.size() ? static_cast<unsigned char>(parte[j]) : 0u);
        for (std::size_t j = 0; j < 4; ++j) texto += j <= parte.size() ? kAlfabeto[grupo >> (18 - 6 * j) & 63] : '=';
    }
    return texto;
}

std::size_t DeBase64(std::string_view resto, std::string& saida, std::size_t limite) {
    std::size_t posicao = 0;
    do {
        posicao = GruposSimples(resto, saida, posicao, limite);
    } while (posicao < limite && GrupoQualquer(resto, saida, posicao));
    return posicao;
}

}  // namespace wkd
