#include "TextoDeData.h"

#include <array>
#include <cstdio>

#include "Texto.h"

namespace wkd {

namespace {

constexpr int kDigitosDaFracao = 7;

/// Reads a text from its start on; every operation is false, and the text as it was, when it does not fit.
class TLeitura {
  public:
    explicit TLeitura(std::string_view texto) : resto_(texto) {}

    bool Fim() const { return resto_.empty(); }
    bool Sinal(char c) {
        if (resto_.empty() || resto_.front() != c) return false;
        resto_.remove_prefix(1);
        return true;
    }
    /// Between `minimo` and `maximo` digits.
    bool Numero(int minimo, int maximo, int& numero, int* lidos = nullptr) {
        int digitos = 0;
        for (int valor = 0; digitos < maximo && Digito(digitos); numero = valor)
            valor = valor * 10 + (resto_[static_cast<std::size_t>(digitos++)] - '0');
        if (digitos < minimo) return false;
        resto_.remove_prefix(static_cast<std::size_t>(digitos));
        if (lidos) *lidos = digitos;
        return true;
    }

    bool Data(TData& data);
    bool Hora(THora& hora);

  private:
    bool Digito(int posicao) const {
        const auto p = static_cast<std::size_t>(posicao);
        return p < resto_.size() && resto_[p] >= '0' && resto_[p] <= '9';
    }
    bool AnoMesDia(TCalendario& c) {
        return Numero(4, 4, c.ano) && Sinal('-') && Numero(1, 2, c.mes) && Sinal('-') && Numero(1, 2, c.dia);
    }
    bool DiaMesAno(TCalendario& c) {
        return Numero(1, 2, c.dia) && Sinal('/') && Numero(1, 2, c.mes) && Sinal('/') && Numero(4, 4, c.ano);
    }

    std::string_view resto_;
};

bool TLeitura::Data(TData& data) {
    TCalendario c;
    const TLeitura inicio = *this;
    if (!AnoMesDia(c)) {
        *this = inicio;
        if (!DiaMesAno(c)) return false;
    }
    if (c.ano < 1 || c.mes < 1 || c.mes > 12 || c.dia < 1) return false;
    data = DataDe(c.ano, c.mes, c.dia);
    return CalendarioDe(data).dia == c.dia;  // a day past the month's end has become one of the next month
}

bool TLeitura::Hora(THora& hora) {
    int horas = 0, minutos = 0, segundos = 0, fracao = 0, digitos = kDigitosDaFracao;
    if (!Numero(1, 2, horas) || !Sinal(':') || !Numero(2, 2, minutos)) return false;
    if (Sinal(':')) {
        if (!Numero(2, 2, segundos)) return false;
        if (Sinal('.') && !Numero(1, kDigitosDaFracao, fracao, &digitos)) return false;
    }
    if (horas > 23 || minutos > 59 || segundos > 59) return false;
    for (; digitos < kDigitosDaFracao; ++digitos) fracao *= 10;
    hora.tiques = (horas * 3600 + minutos * 60 + segundos) * kTiquesPorSegundo + fracao;
    return true;
}

}  // namespace

std::string TextoDaData(TData data) {
    const TCalendario c = CalendarioDe(data);
    std::array<char, 48> texto;
    std::snprintf(texto.data(), texto.size(), "%04d-%02d-%02d", c.ano, c.mes, c.dia);
    return texto.data();
}

std::string TextoDaHora(THora hora) {
    const auto segundos = static_cast<int>(hora.tiques / kTiquesPorSegundo);
    const auto fracao = static_cast<int>(hora.tiques % kTiquesPorSegundo);
    std::array<char, 48> espaco;
    std::snprintf(espaco.data(), espaco.size(), "%02d:%02d:%02d.%07d", segundos / 3600, segundos / 60 % 60,
                  segundos % 60, fracao);
    std::string texto = espaco.data();
    texto.erase(fracao == 0 ? texto.find('.') : texto.find_last_not_of('0') + 1);
    return texto;
}

std::string TextoDaDataHora(TDataHora quando) { return TextoDaData(quando.data) + " " + TextoDaHora(quando.hora); }

std::optional<TData> LeData(std::string_view texto) {
    TLeitura leitura(Apara(texto));
    TData data;
    if (!leitura.Data(data) || !leitura.Fim()) return std::nullopt;
    return data;
}

std::optional<THora> LeHora(std::string_view texto) {
    TLeitura leitura(Apara(texto));
    THora hora;
    if (!leitura.Hora(hora) || !leitura.Fim()) return std::nullopt;
    return hora;
}

std::optional<TDataHora> LeDataHora(std::string_view texto) {
    TLeitura leitura(Apara(texto));
    TDataHora quando;
    if (!leitura.Data(quando.data)) return std::nullopt;
    if (leitura.Fim()) return quando;
    if (!leitura.Sinal('T') && !leitura.Sinal(' ')) return std::nullopt;
    if (!leitura.Hora(quando.hora) || !leitura.Fim()) return std::nullopt;
    return quando;
}

}  // namespace wkd
