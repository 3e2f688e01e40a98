#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace wkd {

/// Kinds of data that columns and fields hold.
enum class TTipoDado { Texto, Inteiro, Decimal, Flutuante, Logico, Data, Hora, DataHora, Blob, Memo, Bytes };

/// Fixed-point number: valor x 10^-escala, 0 <= escala <= 18.
struct TDecimal {
    std::int64_t valor = 0;
    int escala = 0;
    bool operator==(const TDecimal&) const = default;
};

/// Day of the proleptic Gregorian calendar; 1970-01-01 is 0.
struct TData {
    std::int32_t dias = 0;
    auto operator<=>(const TData&) const = default;
};

inline constexpr std::int64_t kTiquesPorSegundo = 10'000'000;

/// Time of day in ticks of 100 ns since midnight.
struct THora {
    std::int64_t tiques = 0;
    auto operator<=>(const THora&) const = default;
};

struct TDataHora {
    TData data;
    THora hora;
    auto operator<=>(const TDataHora&) const = default;
};

struct TBytes {
    std::string bytes;
    bool operator==(const TBytes&) const = default;
};

/// Forward stream of bytes.
class TLeitorBytes {
  public:
    virtual ~TLeitorBytes() = default;
    /// Fills the start of `destino` and returns how many bytes came; 0 only at the end (`destino` is never empty).
    virtual std::size_t Le(std::span<char> destino) = 0;
};

/// Content of a blob that stays where it is (server, package file) until somebody reads it. The object stays
/// valid as long as its connection or file does; it may be opened any number of times.
class TConteudo {
  public:
    virtual ~TConteudo() = default;
    virtual std::unique_ptr<TLeitorBytes> Abre() const = 0;
    /// Whole content in memory.
    virtual std::string Tudo() const;
};

/// A value of a row: NULL or one of the types below. Text is UTF-8. A blob is TBytes, text, or a TConteudo.
class TValor {
  public:
    using TVariante = std::variant<std::monostate, bool, std::int64_t, TDecimal, double, std::string, TBytes, TData,
                                   THora, TDataHora, std::shared_ptr<const TConteudo>>;

    TValor() = default;
    TValor(bool v) : v_(v) {}
    TValor(int v) : v_(std::int64_t{v}) {}
    TValor(std::int64_t v) : v_(v) {}
    TValor(TDecimal v) : v_(v) {}
    TValor(double v) : v_(v) {}
    TValor(std::string v) : v_(std::move(v)) {}
    TValor(std::string_view v) : v_(std::string(v)) {}
    TValor(const char* v) : v_(std::string(v)) {}
    TValor(TBytes v) : v_(std::move(v)) {}
    TValor(TData v) : v_(v) {}
    TValor(THora v) : v_(v) {}
    TValor(TDataHora v) : v_(v) {}
    TValor(std::shared_ptr<const TConteudo> v) : v_(std::move(v)) {}

    const TVariante& Variante() const { return v_; }
    template <class T>
    const T* Se() const {
        return std::get_if<T>(&v_);
    }

    bool Nulo() const { return v_.index() == 0; }
    /// NULL or empty text.
    bool Vazio() const;
    /// NULL, or a text or blob of blanks: what every type but a text reads as NULL.
    bool EmBranco() const;

    /// Text that DeTexto reads back to an equal value: shortest round-trip form for doubles, all of a time's
    /// fraction, "yyyy-mm-dd hh:mm:ss[.fffffff]", blob content as text (valid UTF-8 or Windows-1252). NULL is "".
    std::string ComoTexto() const;
    /// NULL and empty text are 0. Throws TErroConversao for what is no integer (a fraction is cut off).
    std::int64_t ComoInteiro() const;
    /// NULL and empty text are 0. Throws TErroConversao for what is no number.
    double ComoDouble() const;
    /// Bytes of a text or a blob, whole.
    std::string ComoBytes() const;

    /// Value of the wanted type; NULL stays NULL, and an empty text is NULL for every type but Texto, Memo, Blob and
    /// Bytes. Decimal comma and point are both read. Throws TErroConversao.
    TValor Converte(TTipoDado tipo) const;
    /// The content of the value of the wanted type. Throws TErroConversao, for what reads as NULL, too.
    template <class T>
    T Como(TTipoDado tipo) const {
        const TValor convertido = Converte(tipo);
        if (const T* conteudo = convertido.Se<T>()) return *conteudo;
        NaoSeConverte(tipo);
    }

    /// Same type and same content; blobs compare by bytes, a decimal and an integer by number.
    bool operator==(const TValor& outro) const;

  private:
    [[noreturn]] void NaoSeConverte(TTipoDado tipo) const;

    TVariante v_;
};

/// Days since 1970-01-01 of a calendar day, and back. The month exists, the year is one from -32767 to 32767; a day
/// past the month's end is in the next month.
TData DataDe(int ano, int mes, int dia);
struct TCalendario {
    int ano = 1970;
    int mes = 1;
    int dia = 1;
};
TCalendario CalendarioDe(TData data);
/// Local date and time, to the millisecond.
TDataHora Agora();

}  // namespace wkd
