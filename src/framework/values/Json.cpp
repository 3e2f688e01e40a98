#include "values/Json.h"

#include <array>
#include <cmath>
#include <span>

#include "values/TextoDeNumero.h"

namespace wkd {

namespace {

/// Base64 of bytes that come in pieces of any length.
class TBase64 {
  public:
    explicit TBase64(std::ostream& saida) : saida_(saida) {}

    void Bytes(std::string_view bytes) {
        for (const char c : bytes) {
            grupo_ = grupo_ << 8 | static_cast<unsigned char>(c);
            if (++quantos_ == 3) Escreve();
        }
    }
    void Fim() {
        if (quantos_ == 0) return;
        grupo_ <<= 8 * (3 - quantos_);
        Escreve();
    }

  private:
    void Escreve() {
        static constexpr std::string_view kLetras = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        for (int i = 0; i < 4; ++i) saida_ << (i <= quantos_ ? kLetras[grupo_ >> (18 - 6 * i) & 63] : '=');
        grupo_ = 0;
        quantos_ = 0;
    }

    std::ostream& saida_;
    unsigned grupo_ = 0;
    int quantos_ = 0;
};

template <class TFonte>
void EscreveBase64(std::ostream& saida, TFonte&& fonte) {
    saida << "{\"base64\": \"";
    TBase64 base(saida);
    fonte(base);
    base.Fim();
    saida << "\"}";
}

void EscreveConteudo(std::ostream& saida, const TConteudo& conteudo) {
    EscreveBase64(saida, [&](TBase64& base) {
        std::array<char, 16384> pedaco;
        const auto leitor = conteudo.Abre();
        while (const std::size_t lidos = leitor->Le(pedaco)) base.Bytes({pedaco.data(), lidos});
    });
}

void EscreveControle(std::ostream& saida, char c) {
    static constexpr std::string_view kDigitos = "0123456789abcdef";
    saida << "\\u00" << kDigitos[c >> 4 & 15] << kDigitos[c & 15];
}

}  // namespace

void EscreveJson(std::ostream& saida, std::string_view texto) {
    saida << '"';
    for (const char c : texto) {
        if (c == '"' || c == '\\')
            saida << '\\' << c;
        else if (c == '\n')
            saida << "\\n";
        else if (static_cast<unsigned char>(c) < 0x20)
            EscreveControle(saida, c);
        else
            saida << c;
    }
    saida << '"';
}

void EscreveJson(std::ostream& saida, const TValor& valor) {
    if (valor.Nulo())
        saida << "null";
    else if (const auto* logico = valor.Se<bool>())
        saida << (*logico ? "true" : "false");
    else if (valor.Se<std::int64_t>() || valor.Se<TDecimal>())
        saida << valor.ComoTexto();
    else if (const auto* real = valor.Se<double>(); real && std::isfinite(*real))
        saida << TextoDoDouble(*real);
    else if (const auto* conteudo = valor.Se<std::shared_ptr<const TConteudo>>())
        EscreveConteudo(saida, **conteudo);
    else if (const auto* bytes = valor.Se<TBytes>())
        EscreveBase64(saida, [&](TBase64& base) { base.Bytes(bytes->bytes); });
    else
        EscreveJson(saida, std::string_view(valor.ComoTexto()));
}

}  // namespace wkd
