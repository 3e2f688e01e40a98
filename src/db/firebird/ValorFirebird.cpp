#include "firebird/ValorFirebird.h"

#include <cmath>
#include <cstring>
#include <limits>

#include "driver/ValorDoDriver.h"
#include "values/ConjuntoFirebird.h"
#include "values/Erros.h"
#include "values/Texto.h"

namespace wkd {

namespace {

std::unique_ptr<std::max_align_t[]> Bloco(std::size_t bytes) {
    return std::make_unique<std::max_align_t[]>(bytes / sizeof(std::max_align_t) + 1);
}

constexpr std::size_t kAlinhamento = 8;

}  // namespace

std::size_t BytesDoValor(const XSQLVAR& var) {
    const bool variavel = (var.sqltype & ~1) == SQL_VARYING;
    return static_cast<std::size_t>(var.sqllen) + (variavel ? sizeof(ISC_USHORT) : 0);
}

void TDescritorFirebird::Reserva(std::size_t lugares) {
    memoria_ = Bloco(XSQLDA_LENGTH(lugares));
    Da()->version = SQLDA_VERSION1;
    Da()->sqln = static_cast<ISC_SHORT>(lugares);
}

bool TDescritorFirebird::Cresce() {
    if (Da()->sqld <= Da()->sqln) return false;
    Reserva(Quantos());
    return true;
}

void TDescritorFirebird::AlocaLinha() {
    std::vector<std::size_t> onde(Quantos());
    std::size_t total = 0;
    for (std::size_t i = 0; i < Quantos(); ++i) {
        onde[i] = total;
        total += (BytesDoValor(Var(i)) + kAlinhamento - 1) / kAlinhamento * kAlinhamento;
    }
    linha_ = Bloco(total);
    indicadores_.assign(Quantos(), 0);
    for (std::size_t i = 0; i < Quantos(); ++i) {
        Var(i).sqldata = reinterpret_cast<ISC_SCHAR*>(linha_.get()) + onde[i];
        Var(i).sqlind = &indicadores_[i];
    }
}

namespace {

/// Days from 1858-11-17, where the server counts from, to 1970-01-01.
constexpr std::int32_t kDiasDoServidor = 40587;
/// The server counts a time in 1/10000 s.
constexpr std::int64_t kTiquesPorFracao = kTiquesPorSegundo / ISC_TIME_SECONDS_PRECISION;
constexpr std::size_t kMaiorTexto = 32765;

int Tipo(const XSQLVAR& var) { return var.sqltype & ~1; }
int NumeroDoConjunto(const XSQLVAR& var) { return var.sqlsubtype & 0xFF; }

template <class T>
T Cru(const XSQLVAR& var) {
    T v;
    std::memcpy(&v, var.sqldata, sizeof v);
    return v;
}

template <class T>
void GravaCru(XSQLVAR& var, const T& v) {
    std::memcpy(var.sqldata, &v, sizeof v);
}

// From the server

TValor Texto(const XSQLVAR& var, std::string_view bytes) {
    const auto conjunto = ConjuntoDoNumero(NumeroDoConjunto(var));
    if (conjunto == TConjunto::Octetos) return TBytes{std::string(bytes)};
    if (Tipo(var) == SQL_TEXT) bytes = AparaFim(bytes);
    return ParaUtf8(conjunto, bytes);
}

TValor Numero(const XSQLVAR& var, std::int64_t v) {
    if (var.sqlscale == 0) return v;
    return TDecimal{v, -var.sqlscale};
}

TData Dia(ISC_DATE dias) { return {dias - kDiasDoServidor}; }
THora HoraDe(ISC_TIME fracoes) { return {static_cast<std::int64_t>(fracoes) * kTiquesPorFracao}; }

// To the server

template <class T>
void GravaFixo(XSQLVAR& var, const TValor& valor) {
    const auto v = NumeroFixo(valor, -var.sqlscale);
    if (v < std::numeric_limits<T>::min() || v > std::numeric_limits<T>::max())
        NaoCabe(valor, "um inteiro de " + std::to_string(8 * sizeof(T)) + " bits");
    GravaCru(var, static_cast<T>(v));
}

void GravaFloat(XSQLVAR& var, const TValor& valor) {
    const double v = Flutuante(valor);
    if (std::isfinite(v) && std::abs(v) > std::numeric_limits<float>::max()) NaoCabe(valor, "float");
    GravaCru(var, static_cast<float>(v));
}

ISC_DATE Dias(TData data, const TValor& valor) {
    static const TData kPrimeira = DataDe(1, 1, 1);
    static const TData kUltima = DataDe(9999, 12, 31);
    if (data < kPrimeira || data > kUltima) NaoCabe(valor, "uma data (anos 1 a 9999)");
    return data.dias + kDiasDoServidor;
}

ISC_TIME Fracoes(THora hora, const TValor& valor) {
    if (hora.tiques < 0 || hora.tiques >= 86400 * kTiquesPorSegundo || hora.tiques % kTiquesPorFracao != 0)
        NaoCabe(valor, "uma hora com quatro casas de segundo");
    return static_cast<ISC_TIME>(hora.tiques / kTiquesPorFracao);
}

TDataHora DataHora(const TValor& valor) { return valor.Como<TDataHora>(TTipoDado::DataHora); }

ISC_DATE SoData(const TValor& valor) {
    if (const auto* data = valor.Se<TData>()) return Dias(*data, valor);
    const auto momento = DataHora(valor);
    if (momento.hora.tiques != 0) NaoCabe(valor, "uma data sem hora");
    return Dias(momento.data, valor);
}

ISC_TIMESTAMP Momento(const TValor& valor) {
    const auto momento = DataHora(valor);
    return {Dias(momento.data, valor), Fracoes(momento.hora, valor)};
}

void GravaBytes(XSQLVAR& var, std::vector<char>& memoria, std::string_view bytes) {
    if (bytes.size() > kMaiorTexto)
        throw TErroConversao("um texto de " + std::to_string(bytes.size()) + " bytes não cabe em uma coluna de texto");
    if (bytes.size() > static_cast<std::size_t>(var.sqllen)) {
        var.sqllen = static_cast<ISC_SHORT>(bytes.size());
        memoria.resize(BytesDoValor(var));
        var.sqldata = memoria.data();
    }
    GravaCru(var, static_cast<ISC_USHORT>(bytes.size()));
    std::memcpy(var.sqldata + sizeof(ISC_USHORT), bytes.data(), bytes.size());
}

void GravaTexto(XSQLVAR& var, std::vector<char>& memoria, const TValor& valor) {
    const auto conjunto = ConjuntoDoNumero(NumeroDoConjunto(var));
    if (conjunto == TConjunto::Octetos) return GravaBytes(var, memoria, valor.ComoBytes());
    const auto* texto = valor.Se<std::string>();
    if (texto && conjunto == TConjunto::Utf8) return GravaBytes(var, memoria, *texto);
    GravaBytes(var, memoria, DeUtf8(conjunto, texto ? *texto : valor.ComoTexto()));
}

/// A blank text is a value of a text alone; every other type takes it as NULL.
bool ContaComoNulo(const XSQLVAR& var, const TValor& valor) {
    const bool texto = Tipo(var) == SQL_VARYING || Tipo(var) == SQL_TEXT;
    return valor.Nulo() || (!texto && valor.EmBranco());
}

}  // namespace

bool NomeCortado(const XSQLVAR& var) {
    return static_cast<std::size_t>(var.aliasname_length) >= sizeof var.aliasname - 1;
}

TCampo CampoDe(const XSQLVAR& var) {
    TCampo campo;
    if (!NomeCortado(var)) campo.nome.assign(var.aliasname, static_cast<std::size_t>(var.aliasname_length));
    campo.requerido = (var.sqltype & 1) == 0;
    switch (Tipo(var)) {
        case SQL_TEXT:
        case SQL_VARYING:
            campo.tipo = NumeroDoConjunto(var) == 1 ? TTipoDado::Bytes : TTipoDado::Texto;
            campo.tamanho = var.sqllen / BytesPorCaractere(NumeroDoConjunto(var));
            break;
        case SQL_SHORT:
        case SQL_LONG:
        case SQL_INT64:
            campo.tipo = var.sqlscale == 0 ? TTipoDado::Inteiro : TTipoDado::Decimal;
            if (var.sqlscale == 0) break;
            campo.tamanho = Tipo(var) == SQL_SHORT ? 4 : Tipo(var) == SQL_LONG ? 9 : 18;
            campo.escala = -var.sqlscale;
            break;
        case SQL_FLOAT:
        case SQL_DOUBLE:
        case SQL_D_FLOAT:
            campo.tipo = TTipoDado::Flutuante;
            break;
        case SQL_BOOLEAN:
            campo.tipo = TTipoDado::Logico;
            break;
        case SQL_TYPE_DATE:
            campo.tipo = TTipoDado::Data;
            break;
        case SQL_TYPE_TIME:
            campo.tipo = TTipoDado::Hora;
            break;
        case SQL_TIMESTAMP:
            campo.tipo = TTipoDado::DataHora;
            break;
        case SQL_BLOB:
            campo.tipo = var.sqlsubtype == isc_blob_text ? TTipoDado::Memo : TTipoDado::Blob;
            break;
        default:
            break;
    }
    return campo;
}

TValor LeValor(const XSQLVAR& var) {
    if ((var.sqltype & 1) != 0 && *var.sqlind < 0) return {};
    switch (Tipo(var)) {
        case SQL_TEXT:
            return Texto(var, {var.sqldata, static_cast<std::size_t>(var.sqllen)});
        case SQL_VARYING:
            return Texto(var, {var.sqldata + sizeof(ISC_USHORT), Cru<ISC_USHORT>(var)});
        case SQL_SHORT:
            return Numero(var, Cru<ISC_SHORT>(var));
        case SQL_LONG:
            return Numero(var, Cru<ISC_LONG>(var));
        case SQL_INT64:
            return Numero(var, Cru<ISC_INT64>(var));
        case SQL_FLOAT:
            return static_cast<double>(Cru<float>(var));
        case SQL_DOUBLE:
        case SQL_D_FLOAT:
            return Cru<double>(var);
        case SQL_BOOLEAN:
            return Cru<FB_BOOLEAN>(var) != 0;
        case SQL_TYPE_DATE:
            return Dia(Cru<ISC_DATE>(var));
        case SQL_TYPE_TIME:
            return HoraDe(Cru<ISC_TIME>(var));
        case SQL_TIMESTAMP: {
            const auto momento = Cru<ISC_TIMESTAMP>(var);
            return TDataHora{Dia(momento.timestamp_date), HoraDe(momento.timestamp_time)};
        }
        case SQL_NULL:
            return {};
        default:
            throw TErroConversao("tipo de coluna desconhecido: " + std::to_string(Tipo(var)));
    }
}

void PreparaParametro(XSQLVAR& var, std::vector<char>& memoria, ISC_SHORT& nulo) {
    const bool texto = Tipo(var) == SQL_TEXT || Tipo(var) == SQL_VARYING;
    var.sqltype = static_cast<ISC_SHORT>((texto ? SQL_VARYING : Tipo(var)) | 1);
    memoria.assign(BytesDoValor(var) + 1, 0);
    var.sqldata = memoria.data();
    var.sqlind = &nulo;
}

void GravaValor(XSQLVAR& var, std::vector<char>& memoria, const TValor& valor) {
    *var.sqlind = ContaComoNulo(var, valor) ? -1 : 0;
    if (*var.sqlind < 0) return;
    switch (Tipo(var)) {
        case SQL_VARYING:
            return GravaTexto(var, memoria, valor);
        case SQL_SHORT:
            return GravaFixo<ISC_SHORT>(var, valor);
        case SQL_LONG:
            return GravaFixo<ISC_LONG>(var, valor);
        case SQL_INT64:
            return GravaFixo<ISC_INT64>(var, valor);
        case SQL_FLOAT:
            return GravaFloat(var, valor);
        case SQL_DOUBLE:
        case SQL_D_FLOAT:
            return GravaCru(var, Flutuante(valor));
        case SQL_BOOLEAN:
            return GravaCru(var, static_cast<FB_BOOLEAN>(valor.Como<bool>(TTipoDado::Logico) ? 1 : 0));
        case SQL_TYPE_DATE:
            return GravaCru(var, SoData(valor));
        case SQL_TYPE_TIME:
            return GravaCru(var, Fracoes(valor.Como<THora>(TTipoDado::Hora), valor));
        case SQL_TIMESTAMP:
            return GravaCru(var, Momento(valor));
        case SQL_NULL:
            return;
        default:
            throw TErroConversao("tipo de parâmetro desconhecido: " + std::to_string(Tipo(var)));
    }
}

void GravaBlobCurto(XSQLVAR& var, std::vector<char>& memoria, int conjunto, std::string_view bytes) {
    var.sqltype = SQL_VARYING | 1;
    var.sqlsubtype = static_cast<ISC_SHORT>(conjunto);
    var.sqlscale = 0;
    var.sqllen = static_cast<ISC_SHORT>(memoria.size() - sizeof(ISC_USHORT));
    GravaBytes(var, memoria, bytes);
}

}  // namespace wkd
