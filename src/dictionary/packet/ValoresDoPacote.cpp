#include "packet/ValoresDoPacote.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "values/TextoDeData.h"

namespace wkd {

namespace {

constexpr unsigned kNegativo = 0x80, kEmBranco = 0x40, kCasas = 0x3F;

bool SoDigitos(std::string_view texto) {
    return std::all_of(texto.begin(), texto.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::string_view SemZeros(std::string_view digitos) {
    return digitos.substr(std::min(digitos.find_first_not_of('0'), digitos.size()));
}

unsigned Meio(std::string_view bytes, std::size_t posicao) {
    const auto byte = static_cast<unsigned char>(bytes[posicao / 2]);
    return posicao % 2 == 0 ? byte >> 4 : byte & 0xF;
}

}  // namespace

std::string TDigitos::Texto() const {
    std::string texto(SemZeros(digitos));
    const auto casas = static_cast<std::size_t>(escala);
    if (texto.size() <= casas) texto.insert(0, casas + 1 - texto.size(), '0');
    if (casas > 0) texto.insert(texto.size() - casas, ".");
    return negativo ? "-" + texto : texto;
}

TValor TDigitos::Valor() const {
    constexpr int kMaiorEscala = 18;
    const auto inteiro = (negativo ? "-" : "") + std::string(SemZeros(digitos));
    std::int64_t valor = 0;
    const auto lido = std::from_chars(inteiro.data(), inteiro.data() + inteiro.size(), valor);
    const bool zero = SemZeros(digitos).empty();
    if (escala > kMaiorEscala || (lido.ec != std::errc() && !zero)) return TValor(Texto());
    return TValor(TDecimal{zero ? 0 : valor, escala});
}

std::size_t TDigitos::Precisao() const {
    return std::max<std::size_t>({1, SemZeros(digitos).size(), static_cast<std::size_t>(escala)});
}

std::optional<TDigitos> DigitosDeTexto(std::string_view texto) {
    constexpr std::size_t kMaior = 400;
    TDigitos numero;
    numero.negativo = texto.starts_with('-');
    if (numero.negativo || texto.starts_with('+')) texto.remove_prefix(1);
    const auto ponto = std::min(texto.find('.'), texto.size());
    numero.digitos = texto.substr(0, ponto);
    if (ponto < texto.size()) {
        const auto casas = texto.substr(ponto + 1);
        numero.digitos += casas;
        numero.escala = static_cast<int>(std::min(casas.size(), kMaior));
    }
    if (numero.digitos.empty() || numero.digitos.size() > kMaior || !SoDigitos(numero.digitos)) return std::nullopt;
    return numero;
}

std::optional<TValor> ValorDeBcd(std::string_view bytes, std::string& causa) {
    const std::size_t precisao = static_cast<unsigned char>(bytes[0]);
    const unsigned sinal = static_cast<unsigned char>(bytes[1]);
    const std::size_t casas = sinal & kCasas;
    if (sinal & kEmBranco) return TValor();
    causa = "decimal com precisão " + std::to_string(precisao) + " e " + std::to_string(casas) + " casas";
    if (precisao > kMaiorPrecisao || casas > precisao || precisao > 2 * (bytes.size() - 2)) return std::nullopt;
    TDigitos numero{(sinal & kNegativo) != 0, {}, static_cast<int>(casas)};
    for (std::size_t i = 0; i < precisao; ++i) {
        const unsigned digito = Meio(bytes.substr(2), i);
        causa = "decimal com algarismo " + std::to_string(digito);
        if (digito > 9) return std::nullopt;
        numero.digitos += static_cast<char>('0' + digito);
    }
    if (numero.digitos.empty()) numero.digitos = "0";
    return numero.Valor();
}

std::optional<std::string> BcdDeDigitos(const TDigitos& numero, std::size_t tamanho) {
    const std::size_t precisao = numero.Precisao();
    if (precisao > kMaiorPrecisao || tamanho < 2 || precisao > 2 * (tamanho - 2)) return std::nullopt;
    std::string digitos(SemZeros(numero.digitos));
    digitos.insert(0, precisao - digitos.size(), '0');
    std::string bytes(tamanho, '\0');
    bytes[0] = static_cast<char>(precisao);
    bytes[1] = static_cast<char>((numero.negativo ? kNegativo : 0) | static_cast<unsigned>(numero.escala));
    for (std::size_t i = 0; i < precisao; ++i) {
        const int digito = digitos[i] - '0';
        bytes[2 + i / 2] = static_cast<char>(bytes[2 + i / 2] | (i % 2 == 0 ? digito << 4 : digito));
    }
    return bytes;
}

namespace {

using std::chrono::sys_days;
using namespace std::chrono_literals;

/// Day 1 of a packet is 0001-01-01.
constexpr std::int64_t DiaDoPacote(sys_days dia) { return (dia - sys_days{1y / 1 / 1}).count() + 1; }
constexpr std::int64_t kDiaZeroUnix = DiaDoPacote(sys_days{1970y / 1 / 1});
constexpr std::int64_t kUltimoDia = DiaDoPacote(sys_days{9999y / 12 / 31});
constexpr std::int64_t kMsPorDia = std::chrono::milliseconds{24h}.count();

/// Takes `quantos` digits off the start of the text; -1, for ever, when they are not there.
class TDigitosFixos {
  public:
    explicit TDigitosFixos(std::string_view texto) : texto_(texto) {}

    int Numero(std::size_t quantos) {
        int numero = 0;
        if (quantos > texto_.size()) certo_ = false;
        for (std::size_t i = 0; certo_ && i < quantos; ++i) {
            certo_ = texto_[i] >= '0' && texto_[i] <= '9';
            numero = numero * 10 + (texto_[i] - '0');
        }
        if (!certo_) return -1;
        texto_.remove_prefix(quantos);
        return numero;
    }
    bool Sinal(char sinal) {
        if (!texto_.starts_with(sinal)) return false;
        texto_.remove_prefix(1);
        return true;
    }
    void Exige(char sinal) { certo_ = Sinal(sinal) && certo_; }
    std::string_view Resto() const { return texto_; }
    bool Certo() const { return certo_; }

  private:
    std::string_view texto_;
    bool certo_ = true;
};

/// Ticks of what follows the seconds: "", "500" or ".5"; -1 for anything else.
std::int64_t Fracao(TDigitosFixos& digitos) {
    constexpr std::size_t kCasasDoTique = 7;
    if (digitos.Resto().empty()) return 0;
    const bool ponto = digitos.Sinal('.');
    const std::size_t casas = ponto ? digitos.Resto().size() : 3;
    if (casas == 0 || casas > kCasasDoTique) return -1;
    std::int64_t tiques = digitos.Numero(casas);
    for (std::size_t i = casas; i < kCasasDoTique; ++i) tiques *= 10;
    return digitos.Certo() && digitos.Resto().empty() ? tiques : -1;
}

template <class... TNumeros>
std::string Formata(const char* formato, TNumeros... numeros) {
    char texto[48];
    std::snprintf(texto, sizeof texto, formato, numeros...);
    return texto;
}

}  // namespace

std::optional<TData> DataDeDias(std::int64_t dias) {
    if (dias < 1 || dias > kUltimoDia) return std::nullopt;
    return TData{static_cast<std::int32_t>(dias - kDiaZeroUnix)};
}

std::optional<THora> HoraDeMs(std::int64_t ms) {
    if (ms < 0 || ms >= kMsPorDia) return std::nullopt;
    return THora{ms * kTiquesPorMs};
}

std::optional<TDataHora> DataHoraDeMs(double ms) {
    if (!(ms >= static_cast<double>(kMsPorDia) && ms < static_cast<double>((kUltimoDia + 1) * kMsPorDia)))
        return std::nullopt;
    const std::int64_t inteiro = std::llround(ms);
    const auto data = DataDeDias(inteiro / kMsPorDia);
    if (!data) return std::nullopt;
    return TDataHora{*data, *HoraDeMs(inteiro % kMsPorDia)};
}

std::int32_t DiasDe(TData data) { return static_cast<std::int32_t>(data.dias + kDiaZeroUnix); }

std::int32_t MsDe(THora hora) { return static_cast<std::int32_t>(hora.tiques / kTiquesPorMs); }

double MsDe(TDataHora quando) { return static_cast<double>(DiasDe(quando.data) * kMsPorDia + MsDe(quando.hora)); }

std::optional<TDataHora> DataHoraDeXml(std::string_view texto) {
    TDigitosFixos digitos(texto);
    const int ano = digitos.Numero(4);
    const bool tracos = digitos.Sinal('-');
    const int mes = digitos.Numero(2);
    if (tracos) digitos.Exige('-');
    const int dia = digitos.Numero(2);
    const auto data = digitos.Certo() ? DataValida(ano, mes, dia) : std::nullopt;
    if (!data) return std::nullopt;
    if (digitos.Resto().empty()) return TDataHora{*data, {}};
    if (!digitos.Sinal('T') && !digitos.Sinal(' ')) return std::nullopt;
    const auto hora = HoraDeXml(digitos.Resto());
    if (!hora) return std::nullopt;
    return TDataHora{*data, *hora};
}

std::optional<THora> HoraDeXml(std::string_view texto) {
    TDigitosFixos digitos(texto);
    const int hora = digitos.Numero(2);
    digitos.Exige(':');
    const int minuto = digitos.Numero(2);
    digitos.Exige(':');
    const int segundo = digitos.Numero(2);
    if (!digitos.Certo() || hora > 23 || minuto > 59 || segundo > 59) return std::nullopt;
    const std::int64_t fracao = Fracao(digitos);
    if (fracao < 0) return std::nullopt;
    return THora{((hora * 60 + minuto) * 60 + segundo) * kTiquesPorSegundo + fracao};
}

std::string DataParaXml(TData data) {
    const auto c = CalendarioDe(data);
    return Formata("%04d%02d%02d", c.ano, c.mes, c.dia);
}

std::string HoraParaXml(THora hora) {
    const std::int32_t ms = MsDe(hora);
    return Formata("%02d:%02d:%02d%03d", ms / 3'600'000, ms / 60'000 % 60, ms / 1000 % 60, ms % 1000);
}

std::string DataHoraParaXml(TDataHora quando) {
    const auto data = DataParaXml(quando.data);
    return quando.hora.tiques == 0 ? data : data + "T" + HoraParaXml(quando.hora);
}

}  // namespace wkd
