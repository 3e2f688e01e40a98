#include "LinhaJson.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "packet/Codigos.h"
#include "packet/FontePacote.h"
#include "packet/FormaXml.h"
#include "values/Erros.h"
#include "values/Texto.h"

namespace wkd {

namespace {

std::int64_t Numero(const TValor& valor) {
    try {
        return valor.ComoInteiro();
    } catch (const TErroConversao&) {
        return 0;
    }
}

/// Numbers by their value, everything else as text.
bool Menor(const TValor& a, const TValor& b) {
    if (const auto* x = a.Se<std::int64_t>(), *y = b.Se<std::int64_t>(); x && y) return *x < *y;
    return Maiusculas(a.ComoTexto()) < Maiusculas(b.ComoTexto());
}

}  // namespace

TLinhasNomeadas::TLinhasNomeadas(TDataPacket pacote) : pacote_(std::move(pacote)) {
    for (std::size_t i = 0; i < pacote_.campos.size(); ++i)
        posicoes_.try_emplace(Maiusculas(pacote_.campos[i].nome), i);
}

void TLinhasNomeadas::Ordena(std::initializer_list<std::string_view> campos) {
    std::ranges::stable_sort(pacote_.linhas, [&](const TLinha& a, const TLinha& b) {
        for (const auto campo : campos) {
            const TValor &x = Valor(a, campo), &y = Valor(b, campo);
            if (Menor(x, y)) return true;
            if (Menor(y, x)) return false;
        }
        return false;
    });
}

const TValor& TLinhasNomeadas::Valor(const TLinha& linha, std::string_view campo) const {
    static const TValor nulo;
    const auto achada = posicoes_.find(Maiusculas(campo));
    return achada == posicoes_.end() ? nulo : linha[achada->second];
}

const TValor& TLinhasNomeadas::Valor(std::string_view campo) const { return Valor(pacote_.linhas[atual_ - 1], campo); }

std::string TLinhasNomeadas::Texto(std::string_view campo) const {
    return std::string(Apara(Valor(campo).ComoTexto()));
}

std::int64_t TLinhasNomeadas::Inteiro(std::string_view campo) const { return Numero(Valor(campo)); }

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

TValor ValorDeBase64(const std::string& texto, TTipoDado dado, const char* onde) {
    std::string bytes;
    try {
        DeBase64(texto, bytes, texto.size());
    } catch (const TErroTrecho& erro) {
        throw TErroTrecho{onde, erro.causa};  // its place was in the text taken from the line
    }
    if (dado != TTipoDado::Memo) return TBytes{std::move(bytes)};
    return Utf8Valido(bytes) ? TValor(std::move(bytes)) : TValor();
}

/// NULL when the item is none of that type.
TValor Converte(const TTipoPacote& tipo, TTipoDado dado, TItemJson&& item, const char* onde) {
    const bool blob = dado == TTipoDado::Blob || dado == TTipoDado::Bytes || dado == TTipoDado::Memo;
    if (item.forma == TItemJson::Base64) return blob ? ValorDeBase64(item.texto, dado, onde) : TValor();
    if (dado == TTipoDado::Texto || dado == TTipoDado::Memo)
        return item.forma == TItemJson::Texto ? TValor(std::move(item.texto)) : TValor();
    const bool logico = item.forma == TItemJson::Logico;
    if (blob || logico != (dado == TTipoDado::Logico)) return {};
    return ValorDoTexto(tipo, item.texto).value_or(TValor());
}

}  // namespace

std::string PercorreLinhaJson(std::string_view linha,
                              const std::function<void(const std::string&, TItemJson&&)>& recebe) {
    TPercurso percurso(recebe);
    TJson::sax_parse(linha, &percurso);
    return percurso.Erro();
}

TValor ValorDeJson(const TTipoPacote& tipo, TTipoDado dado, TItemJson&& item, const char* onde) {
    if (item.forma == TItemJson::Nulo) return {};
    auto valor = Converte(tipo, dado, std::move(item), onde);
    if (valor.Nulo()) throw TErroTrecho{onde, "o valor não é do tipo " + std::string(tipo.xml)};
    return valor;
}

}  // namespace wkd
