#include "values/TextoDeData.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>

#include "values/Texto.h"
#include "values/Valor.h"

#ifdef _WIN32
#include <windows.h>
#endif

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
    const auto valida = DataValida(c.ano, c.mes, c.dia);
    if (valida) data = *valida;
    return valida.has_value();
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

TData DataDe(int ano, int mes, int dia) {
    using namespace std::chrono;
    const auto quando = sys_days{year{ano} / mes / dia};
    return {static_cast<std::int32_t>(quando.time_since_epoch().count())};
}

std::optional<TData> DataValida(int ano, int mes, int dia) {
    using namespace std::chrono;
    // Asked first, since the calendar's own types hold no large number.
    if (ano < 1 || ano > 9999 || mes < 1 || mes > 12 || dia < 1 || dia > 31) return std::nullopt;
    if (!year_month_day{year{ano} / mes / dia}.ok()) return std::nullopt;
    return DataDe(ano, mes, dia);
}

TCalendario CalendarioDe(TData data) {
    using namespace std::chrono;
    const year_month_day dia{sys_days{days{data.dias}}};
    return {int{dia.year()}, static_cast<int>(unsigned{dia.month()}), static_cast<int>(unsigned{dia.day()})};
}

TDataHora Agora() {
    using namespace std::chrono;
    const auto agora = system_clock::now();
    const std::time_t segundos = system_clock::to_time_t(floor<std::chrono::seconds>(agora));
    const auto milissegundos = floor<milliseconds>(agora - floor<std::chrono::seconds>(agora)).count();
    std::tm local{};
#ifdef _WIN32
    localtime_s(&local, &segundos);
#else
    localtime_r(&segundos, &local);
#endif
    const int segundo = local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec;
    return {DataDe(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday),
            THora{segundo * kTiquesPorSegundo + milissegundos * (kTiquesPorSegundo / 1000)}};
}

#ifdef _WIN32
static std::string Separador(LCTYPE qual, const char* padrao) {
    wchar_t texto[8] = L"";
    const int tamanho = GetLocaleInfoEx(LOCALE_NAME_USER_DEFAULT, qual, texto, static_cast<int>(std::size(texto)));
    return tamanho > 1 ? std::filesystem::path(texto).string() : padrao;
}
std::string PadraoDoUsuario(std::string_view padrao) {
    return Troca(Troca(padrao, "/", Separador(LOCALE_SDATE, "/")), ":", Separador(LOCALE_STIME, ":"));
}
#else
std::string PadraoDoUsuario(std::string_view padrao) { return std::string(padrao); }
#endif

namespace {

std::string Digitos(int largura, std::int64_t numero) {
    char texto[24];
    std::snprintf(texto, sizeof texto, "%0*lld", largura, static_cast<long long>(numero));
    return texto;
}

}  // namespace

std::string FormataDataHora(TDataHora quando, std::string_view padrao) {
    const TCalendario dia = CalendarioDe(quando.data);
    const std::int64_t segundos = quando.hora.tiques / kTiquesPorSegundo;
    bool depoisDaHora = false;
    std::string texto;
    while (!padrao.empty()) {
        const auto peca = [&padrao](std::string_view nome) {
            if (!padrao.starts_with(nome)) return false;
            padrao.remove_prefix(nome.size());
            return true;
        };
        if (peca("yyyy")) {
            texto += Digitos(4, dia.ano);
        } else if (peca("yy")) {
            texto += Digitos(2, dia.ano % 100);
        } else if (peca("dd")) {
            texto += Digitos(2, dia.dia);
        } else if (peca("hh")) {
            texto += Digitos(2, segundos / 3600);
            depoisDaHora = true;
        } else if (peca("mm")) {
            texto += Digitos(2, depoisDaHora ? segundos / 60 % 60 : dia.mes);
        } else if (peca("ss")) {
            texto += Digitos(2, segundos % 60);
        } else {
            texto += padrao.front();
            padrao.remove_prefix(1);
        }
    }
    return texto;
}

std::string FormataDuracao(TDataHora inicio, TDataHora fim) {
    const std::int64_t dias = fim.data.dias - inicio.data.dias;
    return FormataDuracao(
        std::chrono::seconds(dias * 86'400 + (fim.hora.tiques - inicio.hora.tiques) / kTiquesPorSegundo));
}

std::string FormataDuracao(std::chrono::seconds duracao) {
    const std::int64_t segundos = duracao.count();
    return Digitos(2, segundos / 3600) + ":" + Digitos(2, segundos / 60 % 60) + ":" + Digitos(2, segundos % 60);
}

std::string ComMilhares(std::int64_t numero) {
    std::string texto = std::to_string(numero);
    const std::size_t primeiro = numero < 0 ? 1 : 0;
    for (std::size_t fim = texto.size(); fim > primeiro + 3; fim -= 3) texto.insert(fim - 3, 1, '.');
    return texto;
}

}  // namespace wkd
