#include "rows/FiltroDataSet.h"

#include <stdexcept>

#include "connection/Erros.h"
#include "rows/LinhasDoDataSet.h"
#include "values/Texto.h"
#include "values/TextoDeNumero.h"

namespace wkd {

namespace {

using TNo = TFiltro::TNo;
using TTipoNo = TFiltro::TTipoNo;

bool DeNome(char c) {
    const bool letra = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    return letra || (c >= '0' && c <= '9') || c == '_' || c == '$' || static_cast<unsigned char>(c) >= 0x80;
}

/// Recursive-descent reader: Expressao = Termo {or Termo}; Termo = Fator {and Fator}; Fator = (Expressao) | Compara.
class TLeitorDeFiltro {
  public:
    explicit TLeitorDeFiltro(std::string_view texto) : texto_(texto), resto_(texto) {}

    TNo Tudo() {
        TNo no = Expressao();
        if (!Apara(resto_).empty()) Recusa();
        return no;
    }

  private:
    [[noreturn]] void Recusa() const { throw std::invalid_argument("Filtro inválido: " + std::string(texto_)); }

    TNo Expressao() {
        TNo primeiro = Termo();
        return Sequencia(TTipoNo::Ou, "or", std::move(primeiro), &TLeitorDeFiltro::Termo);
    }
    TNo Termo() {
        TNo primeiro = Fator();
        return Sequencia(TTipoNo::E, "and", std::move(primeiro), &TLeitorDeFiltro::Fator);
    }
    TNo Sequencia(TTipoNo tipo, std::string_view palavra, TNo primeiro, TNo (TLeitorDeFiltro::*parte)()) {
        if (!Palavra(palavra)) return primeiro;
        TNo no{tipo, {}, 0, {}, {}};
        no.partes.push_back(std::move(primeiro));
        do no.partes.push_back((this->*parte)());
        while (Palavra(palavra));
        return no;
    }
    TNo Fator() {
        if (!Sinal('(')) return Compara();
        TNo no = Expressao();
        Exige(')');
        return no;
    }
    TNo Compara() {
        TNo no;
        no.campo = Nome();
        if (IgualSemCaixa(no.campo, "upper")) {
            Exige('(');
            no.campo = Nome();
            Exige(')');
        }
        Exige('=');
        no.literal = Literal();
        return no;
    }

    bool Sinal(char c) {
        resto_ = Apara(resto_);
        if (resto_.empty() || resto_.front() != c) return false;
        resto_.remove_prefix(1);
        return true;
    }
    void Exige(char c) {
        if (!Sinal(c)) Recusa();
    }
    std::string_view ProximoNome() {
        resto_ = Apara(resto_);
        std::size_t fim = 0;
        while (fim < resto_.size() && DeNome(resto_[fim])) ++fim;
        return resto_.substr(0, fim);
    }
    bool Palavra(std::string_view palavra) {
        if (!IgualSemCaixa(ProximoNome(), palavra)) return false;
        resto_.remove_prefix(palavra.size());
        return true;
    }
    std::string Nome() {
        const std::string nome(ProximoNome());
        if (nome.empty()) Recusa();
        resto_.remove_prefix(nome.size());
        return nome;
    }
    TValor Literal() {
        if (Sinal('\'')) return TextoEntreAspas();
        const auto numero = resto_.substr(0, resto_.find_first_of(" )\t\r\n"));
        const auto lido = LeDecimal(numero);
        if (!lido) Recusa();
        resto_.remove_prefix(numero.size());
        return TValor(*lido);
    }
    TValor TextoEntreAspas() {
        std::string texto;
        for (;;) {
            const auto aspa = resto_.find('\'');
            if (aspa == std::string_view::npos) Recusa();
            texto += resto_.substr(0, aspa);
            resto_.remove_prefix(aspa + 1);
            if (resto_.empty() || resto_.front() != '\'') return TValor(std::move(texto));
            texto += '\'';
            resto_.remove_prefix(1);
        }
    }

    std::string_view texto_;
    std::string_view resto_;
};

void Localiza(TNo& no, const std::vector<TCampo>& campos) {
    for (TNo& parte : no.partes) Localiza(parte, campos);
    if (no.tipo != TTipoNo::Compara) return;
    const int posicao = IndiceDoCampo(campos, no.campo);
    if (posicao < 0) throw std::invalid_argument("Filtro com campo inexistente: " + no.campo);
    no.posicao = static_cast<std::size_t>(posicao);
}

bool Igual(const TValor& valor, const TValor& literal) {
    if (valor.Nulo()) return false;
    if (literal.Se<std::string>()) return ChaveDeValor(valor) == ChaveDeValor(literal);
    if (const auto* texto = valor.Se<std::string>()) {
        const auto numero = LeDecimal(*texto);
        return numero && TValor(*numero) == literal;
    }
    if (const auto* numero = valor.Se<double>()) return *numero == literal.ComoDouble();
    return valor == literal;
}

bool Passa(const TNo& no, const TLinha& linha) {
    if (no.tipo == TTipoNo::Compara) return Igual(linha[no.posicao], no.literal);
    const bool decide = no.tipo == TTipoNo::Ou;  // the result of a part that settles the whole
    for (const TNo& parte : no.partes)
        if (Passa(parte, linha) == decide) return decide;
    return !decide;
}

std::optional<TFiltro::TIgualdade> IgualdadeDe(const TNo& no) {
    if (no.tipo == TTipoNo::Compara && no.literal.Se<std::string>()) return TFiltro::TIgualdade{no.posicao, no.literal};
    if (no.tipo == TTipoNo::E)
        for (const TNo& parte : no.partes)
            if (auto achada = IgualdadeDe(parte)) return achada;
    return std::nullopt;
}

}  // namespace

TFiltro::TFiltro(std::string_view texto) {
    if (!Apara(texto).empty()) raiz_ = TLeitorDeFiltro(texto).Tudo();
}

void TFiltro::LocalizaCampos(const std::vector<TCampo>& campos) {
    if (raiz_) Localiza(*raiz_, campos);
}

bool TFiltro::Aceita(const TLinha& linha) const { return !raiz_ || Passa(*raiz_, linha); }

std::optional<TFiltro::TIgualdade> TFiltro::Igualdade() const { return raiz_ ? IgualdadeDe(*raiz_) : std::nullopt; }

}  // namespace wkd
