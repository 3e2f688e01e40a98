#include "values/Json.h"

#include <cmath>

#include "values/Base64.h"
#include "values/TextoDeNumero.h"

namespace wkd {

namespace {

void EscreveBase64(std::ostream& saida, const TConteudo& conteudo) {
    saida << "{\"base64\": \"";
    ParaBase64(conteudo, [&saida](std::string_view texto) { saida << texto; });
    saida << "\"}";
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
        EscreveBase64(saida, **conteudo);
    else if (const auto* bytes = valor.Se<TBytes>())
        saida << "{\"base64\": \"" << ParaBase64(bytes->bytes) << "\"}";
    else
        EscreveJson(saida, std::string_view(valor.ComoTexto()));
}

}  // namespace wkd
