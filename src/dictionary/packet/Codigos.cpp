#include "packet/Codigos.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>

#include "values/Base64.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr std::uint8_t kEnchimento = 64, kBranco = 65, kReferencia = 66, kInvalido = 0xFF;

constexpr std::array<std::uint8_t, 256> Tabela() {
    std::array<std::uint8_t, 256> tabela{};
    tabela.fill(kInvalido);
    for (std::size_t i = 0; i < kSinaisDoBase64.size(); ++i)
        tabela[static_cast<unsigned char>(kSinaisDoBase64[i])] = static_cast<std::uint8_t>(i);
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

std::size_t DeBase64(std::string_view resto, std::string& saida, std::size_t limite) {
    std::size_t posicao = 0;
    do {
        posicao = GruposSimples(resto, saida, posicao, limite);
    } while (posicao < limite && GrupoQualquer(resto, saida, posicao));
    return posicao;
}

namespace {

bool SurrogadoAlto(char32_t c) { return c >= 0xD800 && c < 0xDC00; }
bool SurrogadoBaixo(char32_t c) { return c >= 0xDC00 && c < 0xE000; }
char32_t Par(char32_t alto, char32_t baixo) { return 0x10000 + ((alto - 0xD800) << 10) + (baixo - 0xDC00); }

char32_t Unidade(std::string_view bytes, std::size_t posicao) {
    return static_cast<unsigned char>(bytes[posicao]) |
           static_cast<char32_t>(static_cast<unsigned char>(bytes[posicao + 1])) << 8;
}

/// Units of ASCII from `posicao` on, four at a time; returns where others begin, or fewer are left before `fim`.
std::size_t AsciiDeUtf16(std::string_view bytes, std::string& saida, std::size_t posicao, std::size_t fim) {
    for (std::uint64_t bloco = 0; posicao + sizeof bloco <= fim; posicao += sizeof bloco) {
        std::memcpy(&bloco, bytes.data() + posicao, sizeof bloco);
        if (bloco & 0xFF80FF80FF80FF80ULL) break;
        const char* unidades = bytes.data() + posicao;
        const char letras[] = {unidades[0], unidades[2], unidades[4], unidades[6]};
        saida.append(letras, sizeof letras);
    }
    return posicao;
}

std::size_t DeUtf16(std::string_view resto, std::string& saida, std::size_t limite) {
    if (resto.size() % 2 != 0) throw TErroTrecho{resto.data(), "texto UTF-16 com número ímpar de bytes"};
    const std::size_t fim = std::min(resto.size(), limite);
    saida.reserve(saida.size() + fim / 2);
    std::size_t posicao = 0;
    while ((posicao = AsciiDeUtf16(resto, saida, posicao, fim)) < fim) {
        char32_t c = Unidade(resto, posicao);
        if (SurrogadoAlto(c) && posicao + 4 <= resto.size() && SurrogadoBaixo(Unidade(resto, posicao + 2))) {
            c = Par(c, Unidade(resto, posicao + 2));
            posicao += 2;
        }
        if (c >= 0xD800 && c < 0xE000) throw TErroTrecho{resto.data() + posicao, "texto UTF-16 inválido"};
        AcrescentaUtf8(saida, c);
        posicao += 2;
    }
    return posicao;
}

/// End of the piece that begins at `inicio`, at most `maximo` bytes of it, no character of UTF-8 cut.
std::size_t FimDaParte(std::string_view texto, std::size_t inicio, std::size_t maximo) {
    if (texto.size() - inicio <= maximo) return texto.size();
    std::size_t fim = inicio + maximo;
    for (int i = 0; i < 3 && fim > inicio + 1 && (static_cast<unsigned char>(texto[fim]) & 0xC0) == 0x80; ++i) --fim;
    return fim;
}

void AcrescentaTexto(std::string& saida, std::string_view texto, bool utf8) {
    if (utf8) {
        if (!Utf8Valido(texto)) throw TErroTrecho{texto.data(), "o texto não está em UTF-8, como o arquivo declara"};
        saida += texto;
    } else {
        saida += De1252(texto);
    }
}

std::size_t DeXml(std::string_view resto, std::string& saida, std::size_t limite, bool utf8) {
    std::size_t posicao = 0;
    while (posicao < resto.size() && posicao < limite) {
        const auto antes = posicao;
        if (resto[posicao] == '&') {
            std::size_t tamanho = 0;
            AcrescentaUtf8(saida, LeReferencia(resto.substr(posicao), tamanho));
            posicao += tamanho;
        } else {
            const auto parte = resto.substr(0, FimDaParte(resto, posicao, limite));
            posicao = std::min(parte.find('&', posicao), parte.size());
            AcrescentaTexto(saida, parte.substr(antes, posicao - antes), utf8);
        }
    }
    return posicao;
}

char32_t Entidade(std::string_view nome) {
    constexpr std::pair<std::string_view, char32_t> kEntidades[] = {
        {"amp", U'&'}, {"lt", U'<'}, {"gt", U'>'}, {"quot", U'"'}, {"apos", U'\''}};
    for (const auto& [entidade, caractere] : kEntidades)
        if (nome == entidade) return caractere;
    return 0x110000;
}

/// Character of one reference without regard to surrogates; past the last code point when it is none.
char32_t ReferenciaSimples(std::string_view texto, std::size_t& tamanho) {
    constexpr std::size_t kMaior = 16;
    const auto fim = texto.substr(0, kMaior).find(';');
    if (fim == std::string_view::npos || fim < 2) return 0x110000;
    tamanho = fim + 1;
    auto nome = texto.substr(1, fim - 1);
    if (nome.front() != '#') return Entidade(nome);
    nome.remove_prefix(1);
    const bool hexa = nome.starts_with('x') || nome.starts_with('X');
    if (hexa) nome.remove_prefix(1);
    std::uint32_t numero = 0;
    const auto lido = std::from_chars(nome.data(), nome.data() + nome.size(), numero, hexa ? 16 : 10);
    return lido.ec == std::errc() && lido.ptr == nome.data() + nome.size() ? char32_t{numero} : 0x110000;
}

}  // namespace

void AcrescentaUtf8(std::string& destino, char32_t c) {
    if (c < 0x80) {
        destino += static_cast<char>(c);
        return;
    }
    const int seguintes = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    destino += static_cast<char>((0xF0 << (3 - seguintes)) | (c >> (6 * seguintes)));
    for (int i = seguintes - 1; i >= 0; --i) destino += static_cast<char>(0x80 | ((c >> (6 * i)) & 0x3F));
}

bool Simples(TCodigo codigo, std::string_view bytes) {
    if (codigo == TCodigo::XmlConferido) return bytes.find('&') == std::string_view::npos;
    constexpr std::uint64_t kUm = 0x0101010101010101ULL, kAlto = 0x8080808080808080ULL;
    while (bytes.size() >= sizeof kUm) {
        std::uint64_t bloco = 0;
        std::memcpy(&bloco, bytes.data(), sizeof bloco);
        const std::uint64_t referencia = bloco ^ (kUm * '&');  // a byte of zeros where it stands
        if ((bloco | ((referencia - kUm) & ~referencia)) & kAlto) return false;
        bytes.remove_prefix(sizeof bloco);
    }
    return std::ranges::all_of(bytes, [](char c) { return c >= 0 && c != '&'; });
}

std::string ParaUtf16(std::string_view utf8) {
    std::string utf16;
    utf16.reserve(2 * utf8.size());
    const auto poe = [&](char32_t unidade) {
        utf16 += static_cast<char>(unidade & 0xFF);
        utf16 += static_cast<char>(unidade >> 8);
    };
    for (std::size_t i = 0; i < utf8.size();) {
        const auto primeiro = static_cast<unsigned char>(utf8[i++]);
        const int seguintes = primeiro < 0xC0 ? 0 : primeiro < 0xE0 ? 1 : primeiro < 0xF0 ? 2 : 3;
        char32_t c = seguintes == 0 ? primeiro : primeiro & (0x3Fu >> seguintes);
        for (int j = 0; j < seguintes && i < utf8.size(); ++j)
            c = c << 6 | (static_cast<unsigned char>(utf8[i++]) & 0x3F);
        if (c >= 0x10000) poe(0xD800 + ((c - 0x10000) >> 10));
        poe(c >= 0x10000 ? 0xDC00 + ((c - 0x10000) & 0x3FF) : c);
    }
    return utf16;
}

char32_t LeReferencia(std::string_view texto, std::size_t& tamanho) {
    char32_t c = ReferenciaSimples(texto, tamanho);
    if (SurrogadoAlto(c) && texto.substr(tamanho).starts_with('&')) {
        std::size_t segunda = 0;
        const char32_t baixo = ReferenciaSimples(texto.substr(tamanho), segunda);
        if (SurrogadoBaixo(baixo)) {
            c = Par(c, baixo);
            tamanho += segunda;
        }
    }
    if (c > 0x10FFFF || (c >= 0xD800 && c < 0xE000))
        throw TErroTrecho{texto.data(), "referência de caractere inválida"};
    return c;
}

TCodigo Define(TCodigo codigo, std::string_view bytes) {
    if (codigo != TCodigo::Ansi) return codigo;
    return Utf8Valido(bytes) ? TCodigo::Bruto : TCodigo::Cp1252;
}

std::size_t DecodificaParte(TCodigo codigo, std::string_view resto, std::string& saida, std::size_t limite) {
    switch (codigo) {
        case TCodigo::Cp1252:
            saida += De1252(resto.substr(0, limite));
            return std::min(limite, resto.size());
        case TCodigo::Utf16:
            return DeUtf16(resto, saida, limite);
        case TCodigo::XmlUtf8:
        case TCodigo::XmlConferido:
        case TCodigo::Xml1252:
            return DeXml(resto, saida, limite, codigo != TCodigo::Xml1252);
        case TCodigo::Base64:
            return DeBase64(resto, saida, limite);
        default:
            saida += resto.substr(0, limite);
            return std::min(limite, resto.size());
    }
}

std::string Decodifica(TCodigo codigo, std::string_view bytes) {
    std::string saida;
    codigo = Define(codigo, bytes);
    if (!bytes.empty()) DecodificaParte(codigo, bytes, saida, bytes.size());
    return saida;
}

namespace {

constexpr std::size_t kMaiorNaMemoria = 4096;
constexpr std::size_t kParte = 32768;

/// Where a blob stands and how.
struct TLugar {
    std::shared_ptr<const TFontePacote> fonte;
    std::string_view trecho;
    TCodigo codigo;
    std::size_t campo;

    [[noreturn]] void Recusa(const TErroTrecho& erro) const { fonte->Recusa(erro, fonte->nomesDosCampos.at(campo)); }
};

class TLeitorPacote : public TLeitorBytes {
  public:
    explicit TLeitorPacote(TLugar lugar) : lugar_(std::move(lugar)) {
        lugar_.codigo = Define(lugar_.codigo, lugar_.trecho);
    }

    std::size_t Le(std::span<char> destino) override {
        while (lida_ == parte_.size() && !lugar_.trecho.empty()) Decodifica();
        const std::size_t bytes = std::min(destino.size(), parte_.size() - lida_);
        if (bytes > 0) std::memcpy(destino.data(), parte_.data() + lida_, bytes);
        lida_ += bytes;
        return bytes;
    }

  private:
    void Decodifica() {
        parte_.clear();
        lida_ = 0;
        try {
            lugar_.trecho.remove_prefix(DecodificaParte(lugar_.codigo, lugar_.trecho, parte_, kParte));
        } catch (const TErroTrecho& erro) {
            lugar_.Recusa(erro);
        }
    }

    TLugar lugar_;
    std::string parte_;
    std::size_t lida_ = 0;
};

class TConteudoPacote : public TConteudo {
  public:
    explicit TConteudoPacote(TLugar lugar) : lugar_(std::move(lugar)) {}
    std::unique_ptr<TLeitorBytes> Abre() const override { return std::make_unique<TLeitorPacote>(lugar_); }

  private:
    TLugar lugar_;
};

}  // namespace

TValor ValorDeBlob(const std::shared_ptr<const TFontePacote>& fonte, std::string_view trecho, TCodigo codigo,
                   std::size_t campo, TTipoDado tipo) {
    if (trecho.size() > kMaiorNaMemoria)
        return TValor(
            std::shared_ptr<const TConteudo>(std::make_shared<TConteudoPacote>(TLugar{fonte, trecho, codigo, campo})));
    auto bytes = Decodifica(codigo, trecho);
    if (tipo == TTipoDado::Memo) return TValor(std::move(bytes));
    return TValor(TBytes{std::move(bytes)});
}

}  // namespace wkd
