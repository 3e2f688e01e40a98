#include "odbc/ParametroOdbc.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>

#include "driver/ValorDoDriver.h"
#include "values/Erros.h"
#include "values/Texto.h"

namespace wkd {
namespace {

constexpr std::size_t kPedaco = 64 * 1024;
constexpr std::size_t kMaiorTexto = 4000;  // characters of nvarchar
constexpr std::size_t kMaiorBinario = 8000;
constexpr std::size_t kMaisDigitos = 18;  // that every whole number of the program has
constexpr int kPrimeiroAno = 1753;        // of datetime; FreeTDS 1.3 sends an earlier date wrong, so it goes as text

bool Longo(const TColunaFisica& coluna) { return coluna.tipo == TTipoDado::Blob || coluna.tipo == TTipoDado::Memo; }

std::int64_t InteiroQueCabe(const TValor& valor, const TColunaFisica& coluna) {
    const auto v = NumeroFixo(valor, 0);
    const auto tipo = Minusculas(coluna.tipoSql);
    const auto cabe = [&](std::int64_t menor, std::int64_t maior) {
        if (v < menor || v > maior) NaoCabe(valor, tipo);
    };
    if (tipo.starts_with("tinyint")) cabe(0, 255);
    if (tipo.starts_with("smallint")) cabe(INT16_MIN, INT16_MAX);
    if (tipo == "int" || tipo == "integer") cabe(INT32_MIN, INT32_MAX);
    return v;
}

/// Whether it is a number of more digits than the program's own hold, as one is read from such a column.
bool NumeroLongo(const TValor& valor, int escala) {
    const auto* texto = valor.Se<std::string>();
    if (!texto || texto->empty()) return false;
    const auto numero = std::string_view(*texto).substr(texto->front() == '-' ? 1 : 0);
    const auto ponto = std::min(numero.find('.'), numero.size());
    const auto digitos = [](std::string_view parte) {
        return std::ranges::all_of(parte, [](char c) { return c >= '0' && c <= '9'; });
    };
    const auto casas = numero.substr(std::min(ponto + 1, numero.size()));
    return numero.size() > kMaisDigitos && digitos(numero.substr(0, ponto)) && digitos(casas) &&
           std::ssize(casas) <= escala;
}

/// Rounded to the decimal places of a second that the column has: a driver refuses more.
TDataHora Arredonda(TDataHora momento, int escala) {
    std::int64_t passo = 1;
    for (int casa = escala; casa < 7; ++casa) passo *= 10;
    momento.hora.tiques = (momento.hora.tiques + passo / 2) / passo * passo;
    if (momento.hora.tiques < 86400 * kTiquesPorSegundo) return momento;
    return {{momento.data.dias + 1}, {0}};
}

/// Length that a driver may tell the server in advance; the content's own is not known.
constexpr SQLULEN kTamanhoDoConteudo = 0x7FFFFFFF;

/// The same for contents of about the same length, so that the statement stays prepared.
SQLULEN TamanhoLongo(std::size_t tamanho) { return std::max<SQLULEN>(std::bit_ceil(tamanho + 1), kPedaco); }

template <class TCadeia>
SQLLEN Lugar(const TCadeia& cadeia) {
    return static_cast<SQLLEN>(cadeia.capacity() * sizeof(cadeia[0]));
}

}  // namespace

void TParametroOdbc::Define(const TValor& valor, const TColunaFisica* coluna) {
    conteudo_.reset();
    leitor_.reset();
    fluxo_ = nullptr;
    const bool texto = !coluna || coluna->tipo == TTipoDado::Texto || Longo(*coluna);
    if (valor.Nulo() || (!texto && coluna->tipo != TTipoDado::Bytes && valor.EmBranco())) return Nulo(coluna);
    if (coluna)
        DefineDaColuna(valor, *coluna);
    else
        DefineDoValor(valor);
}

void TParametroOdbc::DefineFluxo(TLeitorBytes& fonte, const TColunaFisica* coluna) {
    conteudo_.reset();
    Fluxo(fonte, coluna && (coluna->tipo == TTipoDado::Memo || coluna->tipo == TTipoDado::Texto));
}

/// Some servers turn no NULL of one type into another, such as one of a text into an image; what the column has taken
/// before is right.
void TParametroOdbc::Nulo(const TColunaFisica* coluna) {
    if (ligado_ && coluna) {
        forma_ = *ligado_;
        indicador_ = SQL_NULL_DATA;
        return;
    }
    const auto tipo = coluna ? coluna->tipo : TTipoDado::Texto;
    Texto("", tipo == TTipoDado::Memo);
    if (tipo == TTipoDado::Blob || tipo == TTipoDado::Bytes) Bytes("", tipo == TTipoDado::Blob);
    indicador_ = SQL_NULL_DATA;
}

void TParametroOdbc::DefineDaColuna(const TValor& valor, const TColunaFisica& coluna) {
    switch (coluna.tipo) {
        case TTipoDado::Inteiro:
            return Inteiro(InteiroQueCabe(valor, coluna));
        case TTipoDado::Decimal:
            if (NumeroLongo(valor, coluna.escala)) return NumeroEmTexto(valor.ComoTexto(), coluna.escala);
            return NumeroEmTexto(TValor(TDecimal{NumeroFixo(valor, coluna.escala), coluna.escala}).ComoTexto(),
                                 coluna.escala);
        case TTipoDado::Flutuante:
            return Real(Flutuante(valor), IgualSemCaixa(coluna.tipoSql, "real"));
        case TTipoDado::Logico:
            return Logico(valor.Como<bool>(TTipoDado::Logico));
        case TTipoDado::Data:
            if (const auto* momento = valor.Se<TDataHora>(); momento && momento->hora.tiques == 0)
                return Data(momento->data);
            return Data(valor.Como<TData>(TTipoDado::Data));
        case TTipoDado::Hora:
            return Texto(valor.Converte(TTipoDado::Hora).ComoTexto(), false);
        case TTipoDado::DataHora:
            if (valor.Se<THora>()) return Texto(valor.ComoTexto(), false);
            return Momento(valor.Como<TDataHora>(TTipoDado::DataHora), coluna.escala);
        case TTipoDado::Blob:
        case TTipoDado::Memo:
            if (const auto* conteudo = valor.Se<std::shared_ptr<const TConteudo>>())
                return Conteudo(*conteudo, coluna.tipo == TTipoDado::Memo);
            if (coluna.tipo == TTipoDado::Memo) return Texto(valor.ComoTexto(), true);
            return Bytes(valor.Se<TBytes>() ? valor.ComoBytes() : valor.ComoTexto(), true);
        case TTipoDado::Bytes:
            return Bytes(valor.ComoBytes(), false);
        default:
            return Texto(valor.ComoTexto(), false);
    }
}

void TParametroOdbc::DefineDoValor(const TValor& valor) {
    if (const auto* inteiro = valor.Se<std::int64_t>()) return Inteiro(*inteiro);
    if (const auto* logico = valor.Se<bool>()) return Logico(*logico);
    if (const auto* decimal = valor.Se<TDecimal>()) return NumeroEmTexto(valor.ComoTexto(), decimal->escala);
    if (const auto* real = valor.Se<double>()) return Real(*real, false);
    if (const auto* bytes = valor.Se<TBytes>()) return Bytes(bytes->bytes, bytes->bytes.size() > kMaiorBinario);
    if (const auto* data = valor.Se<TData>()) return Data(*data);
    if (const auto* momento = valor.Se<TDataHora>()) return Momento(*momento, 3);
    if (const auto* conteudo = valor.Se<std::shared_ptr<const TConteudo>>()) return Conteudo(*conteudo, false);
    Texto(valor.ComoTexto(), false);
}

void TParametroOdbc::Inteiro(std::int64_t v) {
    inteiro_ = v;
    Forma(SQL_C_SBIGINT, SQL_BIGINT, 19, 0, &inteiro_);
    indicador_ = sizeof inteiro_;
}

void TParametroOdbc::NumeroEmTexto(std::string_view numero, int escala) {
    bytes_.assign(numero);
    Forma(SQL_C_CHAR, SQL_DECIMAL, 38, static_cast<SQLSMALLINT>(escala), bytes_.data(), Lugar(bytes_));
    indicador_ = static_cast<SQLLEN>(bytes_.size());
}

void TParametroOdbc::Real(double v, bool simples) {
    if (simples && std::isfinite(v) && std::abs(v) > std::numeric_limits<float>::max()) NaoCabe(v, "real");
    real_ = v;
    Forma(SQL_C_DOUBLE, SQL_DOUBLE, 53, 0, &real_);
    indicador_ = sizeof real_;
}

void TParametroOdbc::Logico(bool v) {
    logico_ = v ? 1 : 0;
    Forma(SQL_C_BIT, SQL_BIT, 1, 0, &logico_);
    indicador_ = 1;
}

void TParametroOdbc::Texto(std::string_view utf8, bool longo) {
    texto_.assign(TextoLargo(utf8));
    const bool semLimite = longo || texto_.size() > kMaiorTexto;
    Forma(SQL_C_WCHAR, semLimite ? SQL_WLONGVARCHAR : SQL_WVARCHAR,
          semLimite ? TamanhoLongo(texto_.size()) : kMaiorTexto, 0, texto_.data(), Lugar(texto_));
    indicador_ = static_cast<SQLLEN>(texto_.size() * sizeof(char16_t));
}

void TParametroOdbc::Bytes(std::string_view bytes, bool longo) {
    bytes_.assign(bytes);
    Forma(SQL_C_BINARY, longo ? SQL_LONGVARBINARY : SQL_VARBINARY, longo ? TamanhoLongo(bytes_.size()) : kMaiorBinario,
          0, bytes_.data(), Lugar(bytes_));
    indicador_ = static_cast<SQLLEN>(bytes_.size());
}

void TParametroOdbc::Data(TData data) {
    const auto c = CalendarioDe(data);
    if (c.ano < 1 || c.ano > 9999) NaoCabe(data, "uma data (anos 1 a 9999)");
    if (c.ano < kPrimeiroAno) return Texto(TValor(data).ComoTexto(), false);
    data_ = {static_cast<SQLSMALLINT>(c.ano), static_cast<SQLUSMALLINT>(c.mes), static_cast<SQLUSMALLINT>(c.dia)};
    Forma(SQL_C_TYPE_DATE, SQL_TYPE_DATE, 10, 0, &data_);
    indicador_ = sizeof data_;
}

void TParametroOdbc::Momento(const TDataHora& exato, int escala) {
    const auto momento = Arredonda(exato, escala);
    const auto c = CalendarioDe(momento.data);
    if (c.ano < 1 || c.ano > 9999) NaoCabe(momento, "uma data (anos 1 a 9999)");
    if (c.ano < kPrimeiroAno) return Texto(TValor(momento).ComoTexto(), false);
    const auto segundos = momento.hora.tiques / kTiquesPorSegundo;
    momento_ = {static_cast<SQLSMALLINT>(c.ano),
                static_cast<SQLUSMALLINT>(c.mes),
                static_cast<SQLUSMALLINT>(c.dia),
                static_cast<SQLUSMALLINT>(segundos / 3600),
                static_cast<SQLUSMALLINT>(segundos / 60 % 60),
                static_cast<SQLUSMALLINT>(segundos % 60),
                static_cast<SQLUINTEGER>(momento.hora.tiques % kTiquesPorSegundo * 100)};
    Forma(SQL_C_TYPE_TIMESTAMP, SQL_TYPE_TIMESTAMP, static_cast<SQLULEN>(escala == 0 ? 19 : 20 + escala),
          static_cast<SQLSMALLINT>(escala), &momento_);
    indicador_ = sizeof momento_;
}

void TParametroOdbc::Conteudo(std::shared_ptr<const TConteudo> conteudo, bool texto) {
    conteudo_ = std::move(conteudo);
    leitor_ = conteudo_->Abre();
    Fluxo(*leitor_, texto);
}

void TParametroOdbc::Fluxo(TLeitorBytes& fonte, bool texto) {
    fluxo_ = &fonte;
    conteudoTexto_ = texto;
    // The value's place is the token that SQLParamData hands back.
    Forma(texto ? SQL_C_WCHAR : SQL_C_BINARY, texto ? SQL_WLONGVARCHAR : SQL_LONGVARBINARY, kTamanhoDoConteudo, 0,
          this);
    indicador_ = SQL_DATA_AT_EXEC;
}

/// The length of a stream is known once it has been read.
void TParametroOdbc::MedeFluxo() {
    const auto copia = std::make_shared<TConteudoCopiado>(*fluxo_);
    if (conteudoTexto_) return Texto(copia->Tudo(), true);
    Conteudo(copia, false);
    indicador_ = SQL_LEN_DATA_AT_EXEC(static_cast<SQLLEN>(copia->Tamanho()));
}

void TParametroOdbc::Liga(TInstrucaoOdbc& instrucao, SQLUSMALLINT numero, std::string_view comando) {
    if (indicador_ == SQL_DATA_AT_EXEC && instrucao.Ligacao().QuerTamanhoAntes()) MedeFluxo();
    if (ligado_ == forma_) return;
    ligado_.reset();
    instrucao.Confere(SQLBindParameter(instrucao.Handle(), numero, SQL_PARAM_INPUT, forma_.tipoC, forma_.tipoSql,
                                       forma_.tamanho, forma_.escala, forma_.onde, forma_.bytes, &indicador_),
                      comando);
    ligado_ = forma_;
}

void TParametroOdbc::EnviaConteudo(TInstrucaoOdbc& instrucao, std::string_view comando) {
    const auto envia = [&](void* dados, std::size_t bytes) {
        instrucao.Confere(SQLPutData(instrucao.Handle(), dados, static_cast<SQLLEN>(bytes)), comando);
    };
    const auto texto = [&](std::string_view utf8) {
        auto largo = TextoLargo(utf8);
        envia(largo.data(), largo.size() * sizeof(char16_t));
    };
    std::string pedaco(kPedaco, '\0'), resto;
    bool enviou = false;
    while (const auto lidos = fluxo_->Le(pedaco)) {
        enviou = true;
        if (!conteudoTexto_) {
            envia(pedaco.data(), lidos);
            continue;
        }
        resto.append(pedaco, 0, lidos);
        const auto inteiros = CaracteresInteiros(resto);
        texto(std::string_view(resto).substr(0, inteiros));
        resto.erase(0, inteiros);
    }
    if (!resto.empty()) texto(resto);
    if (!enviou) envia(pedaco.data(), 0);
}

}  // namespace wkd
