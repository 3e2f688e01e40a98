#include "LinhaJson.h"

#include <charconv>
#include <nlohmann/json.hpp>

#include "Base64.h"
#include "Bcd.h"
#include "Codigos.h"
#include "Erros.h"
#include "FontePacote.h"
#include "TextoDeNumero.h"

namespace wkd {

namespace {

using TJson = nlohmann::json;

class TPercurso : public nlohmann::json_sax<TJson> {
  public:
    explicit TPercurso(const std::function<void(const std::string&, TItemJson&&)>& recebe) : recebe_(recebe) {}

    const std::string& Erro() const { return erro_; }

    bool null() override { return Entrega({}); }
    bool boolean(bool v) override { return Entrega({TItemJson::Logico, v ? "true" : "false"}); }
    bool number_integer(number_integer_t v) override { return Entrega({TItemJson::Numero, std::to_string(v)}); }
    bool number_unsigned(number_unsigned_t v) override { return Entrega({TItemJson::Numero, std::to_string(v)}); }
    bool number_float(number_float_t, const string_t& digitos) override {
        return Entrega({TItemJson::Numero, digitos});
    }
    bool string(string_t& v) override {
        return Entrega({nivel_ == 2 ? TItemJson::Base64 : TItemJson::Texto, std::move(v)});
    }
    bool binary(binary_t&) override { return Falha(); }
    bool start_object(std::size_t) override { return ++nivel_ == 1 || (nivel_ == 2 && !chave_.empty()) || Falha(); }
    bool key(string_t& v) override {
        if (nivel_ == 2) return v == "base64" || Falha();
        chave_ = std::move(v);
        return true;
    }
    bool end_object() override {
        --nivel_;
        return true;
    }
    bool start_array(std::size_t) override { return Falha(); }
    bool end_array() override { return true; }
    bool parse_error(std::size_t posicao, const std::string&, const TJson::exception&) override {
        erro_ = "a linha não é JSON a partir do seu byte " + std::to_string(posicao);
        return false;
    }

  private:
    bool Falha() {
        erro_ = "a linha não é um objeto de valores simples";
        return false;
    }
    bool Entrega(TItemJson&& item) {
        if (nivel_ == 0 || (nivel_ == 2 && item.forma != TItemJson::Base64)) return Falha();
        recebe_(chave_, std::move(item));
        return true;
    }

    const std::function<void(const std::string&, TItemJson&&)>& recebe_;
    std::string chave_, erro_;
    int nivel_ = 0;
};

TValor Inteiro(const std::string& texto) {
    std::uint64_t grande = 0;
    const auto fim = texto.data() + texto.size();
    if (const auto numero = LeInteiro(texto)) return *numero;
    const auto lido = std::from_chars(texto.data(), fim, grande);
    return lido.ec == std::errc() && lido.ptr == fim ? TValor(texto) : TValor();
}

TValor Decimal(const std::string& texto) {
    const auto digitos = DigitosDeTexto(texto);
    return digitos ? digitos->Valor() : TValor();
}

TValor Flutuante(const std::string& texto) {
    double numero = 0;
    const auto fim = texto.data() + texto.size();
    const auto lido = std::from_chars(texto.data(), fim, numero);
    return lido.ec == std::errc() && lido.ptr == fim ? TValor(numero) : TValor();
}

TValor DeTexto(const std::string& texto, TTipoDado tipo) {
    try {
        return TValor(texto).Converte(tipo);
    } catch (const TErroConversao&) {
        return {};
    }
}

/// NULL when the item is none of that type.
TValor Converte(TTipoDado tipo, TItemJson&& item, const char* onde) {
    const bool texto = item.forma == TItemJson::Texto;
    switch (tipo) {
        case TTipoDado::Logico:
            return item.forma == TItemJson::Logico ? TValor(item.texto == "true") : TValor();
        case TTipoDado::Inteiro:
            return item.forma == TItemJson::Logico ? TValor() : Inteiro(item.texto);
        case TTipoDado::Decimal:
            return item.forma == TItemJson::Logico ? TValor() : Decimal(item.texto);
        case TTipoDado::Flutuante:
            return item.forma == TItemJson::Logico ? TValor() : Flutuante(item.texto);
        case TTipoDado::Data:
        case TTipoDado::Hora:
        case TTipoDado::DataHora:
            return texto ? DeTexto(item.texto, tipo) : TValor();
        default:
            break;
    }
    if (texto && tipo != TTipoDado::Blob && tipo != TTipoDado::Bytes) return TValor(std::move(item.texto));
    if (item.forma != TItemJson::Base64 || tipo == TTipoDado::Texto) return {};
    std::string bytes;
    try {
        DeBase64(item.texto, bytes, item.texto.size());
    } catch (const TErroTrecho& erro) {
        throw TErroTrecho{onde, erro.causa};  // its place was in the text taken from the line
    }
    if (tipo != TTipoDado::Memo) return TBytes{std::move(bytes)};
    return Utf8(bytes) ? TValor(std::move(bytes)) : TValor();
}

}  // namespace

std::string PercorreLinhaJson(std::string_view linha,
                              const std::function<void(const std::string&, TItemJson&&)>& recebe) {
    TPercurso percurso(recebe);
    TJson::sax_parse(linha, &percurso);
    return percurso.Erro();
}

TValor ValorDeJson(const TCampoPacote& campo, TItemJson&& item, const char* onde) {
    if (item.forma == TItemJson::Nulo) return {};
    auto valor = Converte(campo.tipo, std::move(item), onde);
    if (valor.Nulo()) throw TErroTrecho{onde, "o valor não é do tipo " + campo.tipoXml};
    return valor;
}

}  // namespace wkd
