#include "odbc/ValorOdbc.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include "driver/ValorDoDriver.h"
#include "odbc/ErroOdbc.h"

namespace wkd {
namespace {

// Types of SQL Server that the standard headers do not name.
enum : SQLSMALLINT { ssVariant = -150, ssUdt = -151, ssXml = -152, ssTime2 = -154, ssTimestampOffset = -155 };

constexpr std::size_t kPedaco = 32 * 1024;
constexpr int kMaiorEscala = 18;
/// A text of more characters is one of the long types.
constexpr SQLULEN kMaiorTexto = 8000;

TTipoDado DadoDe(const TDescricaoOdbc& d) {
    const bool longo = d.tamanho == 0 || d.tamanho > kMaiorTexto;
    switch (d.tipo) {
        case SQL_BIT:
            return TTipoDado::Logico;
        case SQL_TINYINT:
        case SQL_SMALLINT:
        case SQL_INTEGER:
        case SQL_BIGINT:
            return TTipoDado::Inteiro;
        case SQL_DECIMAL:
        case SQL_NUMERIC:
            if (d.escala == 0 && d.tamanho <= kMaiorEscala) return TTipoDado::Inteiro;
            return d.escala <= kMaiorEscala ? TTipoDado::Decimal : TTipoDado::Texto;
        case SQL_REAL:
        case SQL_FLOAT:
        case SQL_DOUBLE:
            return TTipoDado::Flutuante;
        case SQL_DATE:
        case SQL_TYPE_DATE:
            return TTipoDado::Data;
        case SQL_TIME:
        case SQL_TYPE_TIME:
        case ssTime2:
            return TTipoDado::Hora;
        case SQL_TIMESTAMP:
        case SQL_TYPE_TIMESTAMP:
            return TTipoDado::DataHora;
        case SQL_BINARY:
        case SQL_VARBINARY:
            return longo ? TTipoDado::Blob : TTipoDado::Bytes;
        case SQL_LONGVARBINARY:
        case ssUdt:
            return TTipoDado::Blob;
        case SQL_LONGVARCHAR:
        case SQL_WLONGVARCHAR:
        case ssXml:
            return TTipoDado::Memo;
        case SQL_VARCHAR:
        case SQL_WVARCHAR:
            return longo ? TTipoDado::Memo : TTipoDado::Texto;
        default:
            return TTipoDado::Texto;
    }
}

/// Reads one column of one row in pieces.
class TLeituraOdbc {
  public:
    TLeituraOdbc(TInstrucaoOdbc& instrucao, SQLUSMALLINT coluna, std::string_view comando)
        : instrucao_(instrucao), coluna_(coluna), comando_(comando) {}

    /// A value of a fixed size; false for NULL.
    template <class T>
    bool Fixo(SQLSMALLINT tipoC, T& destino) {
        SQLLEN indicador = SQL_NULL_DATA;
        const auto retorno = SQLGetData(instrucao_.Handle(), coluna_, tipoC, &destino, sizeof destino, &indicador);
        instrucao_.Confere(retorno, comando_);
        return indicador != SQL_NULL_DATA;
    }

    /// All pieces of a long value, each given to `guarda` as its bytes; false for NULL. `fim`: bytes of the character
    /// that a driver puts behind a text.
    template <class TGuarda>
    bool Pedacos(SQLSMALLINT tipoC, std::size_t fim, TGuarda guarda) {
        alignas(SQLWCHAR) std::array<char, kPedaco> pedaco;
        for (;;) {
            SQLLEN indicador = SQL_NULL_DATA;
            const auto retorno =
                SQLGetData(instrucao_.Handle(), coluna_, tipoC, pedaco.data(), pedaco.size(), &indicador);
            if (retorno == SQL_NO_DATA) return true;
            instrucao_.Confere(retorno, comando_);
            if (indicador == SQL_NULL_DATA) return false;
            const auto cabem = pedaco.size() - fim;
            const bool cortado = indicador == SQL_NO_TOTAL || static_cast<std::size_t>(indicador) > cabem;
            guarda(std::string_view(pedaco.data(), cortado ? cabem : static_cast<std::size_t>(indicador)));
            if (!cortado) return true;
        }
    }

  private:
    TInstrucaoOdbc& instrucao_;
    SQLUSMALLINT coluna_;
    std::string_view comando_;
};

TValor Texto(TLeituraOdbc& leitura) {
    std::u16string texto;
    const bool ha = leitura.Pedacos(SQL_C_WCHAR, sizeof(SQLWCHAR), [&](std::string_view bytes) {
        texto.append(reinterpret_cast<const char16_t*>(bytes.data()), bytes.size() / sizeof(char16_t));
    });
    return ha ? TValor(TextoEstreito(texto)) : TValor();
}

TValor Bytes(TLeituraOdbc& leitura) {
    std::string bytes;
    const bool ha = leitura.Pedacos(SQL_C_BINARY, 0, [&](std::string_view pedaco) { bytes += pedaco; });
    return ha ? TValor(TBytes{std::move(bytes)}) : TValor();
}

TValor Blob(TLeituraOdbc& leitura) {
    const auto conteudo = std::make_shared<TConteudoCopiado>();
    const bool ha = leitura.Pedacos(SQL_C_BINARY, 0, [&](std::string_view pedaco) { conteudo->Guarda(pedaco); });
    return ha ? TValor(std::shared_ptr<const TConteudo>(conteudo)) : TValor();
}

TValor Memo(TLeituraOdbc& leitura) {
    const auto conteudo = std::make_shared<TConteudoCopiado>();
    std::u16string resto;
    const bool ha = leitura.Pedacos(SQL_C_WCHAR, sizeof(SQLWCHAR), [&](std::string_view bytes) {
        resto.append(reinterpret_cast<const char16_t*>(bytes.data()), bytes.size() / sizeof(char16_t));
        const bool meioPar = !resto.empty() && (resto.back() & 0xFC00) == 0xD800;
        const auto inteiros = resto.size() - (meioPar ? 1 : 0);
        conteudo->Guarda(TextoEstreito(std::u16string_view(resto).substr(0, inteiros)));
        resto.erase(0, inteiros);
    });
    if (!ha) return {};
    conteudo->Guarda(TextoEstreito(resto));
    return std::shared_ptr<const TConteudo>(conteudo);
}

/// The text form keeps every digit; a number above 18 digits stays a text.
TValor Decimal(TLeituraOdbc& leitura, TTipoDado tipo) {
    const TValor texto = Texto(leitura);
    try {
        return tipo == TTipoDado::Texto ? texto : texto.Converte(tipo);
    } catch (const TErroConversao&) {
        return texto;
    }
}

TValor Momento(TLeituraOdbc& leitura) {
    SQL_TIMESTAMP_STRUCT m{};
    if (!leitura.Fixo(SQL_C_TYPE_TIMESTAMP, m)) return {};
    const std::int64_t segundos = (m.hour * 60 + m.minute) * 60 + m.second;
    return TDataHora{DataDe(m.year, m.month, m.day), {segundos * kTiquesPorSegundo + m.fraction / 100}};
}

template <class TNumero>
TValor Numero(TLeituraOdbc& leitura, SQLSMALLINT tipoC) {
    TNumero v{};
    return leitura.Fixo(tipoC, v) ? TValor(v) : TValor();
}

TValor Logico(TLeituraOdbc& leitura) {
    unsigned char v = 0;
    return leitura.Fixo(SQL_C_BIT, v) ? TValor(v != 0) : TValor();
}

TValor Dia(TLeituraOdbc& leitura) {
    SQL_DATE_STRUCT d{};
    return leitura.Fixo(SQL_C_TYPE_DATE, d) ? TValor(DataDe(d.year, d.month, d.day)) : TValor();
}

}  // namespace

TCampo TipoDe(const TDescricaoOdbc& descricao) {
    TCampo campo;
    campo.tipo = DadoDe(descricao);
    const bool tamanho =
        campo.tipo == TTipoDado::Texto || campo.tipo == TTipoDado::Bytes || campo.tipo == TTipoDado::Decimal;
    if (tamanho) campo.tamanho = static_cast<int>(descricao.tamanho);
    if (campo.tipo == TTipoDado::Decimal) campo.escala = descricao.escala;
    return campo;
}

TValor LeValor(TInstrucaoOdbc& instrucao, SQLUSMALLINT coluna, const TDescricaoOdbc& descricao,
               std::string_view comando) {
    TLeituraOdbc leitura(instrucao, coluna, comando);
    const auto tipo = DadoDe(descricao);
    if (descricao.tipo == SQL_DECIMAL || descricao.tipo == SQL_NUMERIC) return Decimal(leitura, tipo);
    switch (tipo) {
        case TTipoDado::Logico:
            return Logico(leitura);
        case TTipoDado::Inteiro:
            return Numero<std::int64_t>(leitura, SQL_C_SBIGINT);
        case TTipoDado::Flutuante:
            return Numero<double>(leitura, SQL_C_DOUBLE);
        case TTipoDado::Data:
            return Dia(leitura);
        case TTipoDado::Hora:
            return Texto(leitura).Converte(TTipoDado::Hora);
        case TTipoDado::DataHora:
            return Momento(leitura);
        case TTipoDado::Blob:
            return Blob(leitura);
        case TTipoDado::Bytes:
            return Bytes(leitura);
        case TTipoDado::Memo:
            return Memo(leitura);
        default: {
            const bool preenchido = descricao.tipo == SQL_CHAR || descricao.tipo == SQL_WCHAR;
            const TValor texto = Texto(leitura);
            return preenchido && !texto.Nulo() ? TValor(AparaFim(texto.ComoTexto())) : texto;
        }
    }
}

}  // namespace wkd
