#pragma once

#include <ibase.h>
#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "values/Campo.h"

namespace wkd {

/// XSQLDA that owns its memory: the description of a statement's columns or parameters and the row they lie in.
class TDescritorFirebird {
  public:
    explicit TDescritorFirebird(std::size_t lugares = 16) { Reserva(lugares); }

    XSQLDA* Da() { return reinterpret_cast<XSQLDA*>(memoria_.get()); }
    const XSQLDA* Da() const { return reinterpret_cast<const XSQLDA*>(memoria_.get()); }
    /// Number of described columns or parameters.
    std::size_t Quantos() const { return static_cast<std::size_t>(Da()->sqld); }
    XSQLVAR& Var(std::size_t i) { return Da()->sqlvar[i]; }
    const XSQLVAR& Var(std::size_t i) const { return Da()->sqlvar[i]; }

    /// The last description had more places than there were; true when it has to be asked again.
    bool Cresce();
    /// Gives every column its place in one row.
    void AlocaLinha();

  private:
    void Reserva(std::size_t lugares);

    std::unique_ptr<std::max_align_t[]> memoria_;
    std::unique_ptr<std::max_align_t[]> linha_;
    std::vector<ISC_SHORT> indicadores_;
};

/// Bytes that a value of the variable takes in a row.
std::size_t BytesDoValor(const XSQLVAR& var);

/// Whether the description may hold only the beginning of the column's name: it has room for 31 letters.
bool NomeCortado(const XSQLVAR& var);

/// Column of a result set as the rest of the program knows it; without a name that is cut.
TCampo CampoDe(const XSQLVAR& var);

/// Value of a fetched column; blobs apart. CHAR comes without its padding blanks, VARCHAR as it is stored.
TValor LeValor(const XSQLVAR& var);

/// Makes a described parameter one that takes values and NULL, its value lying in `memoria`.
void PreparaParametro(XSQLVAR& var, std::vector<char>& memoria, ISC_SHORT& nulo);

/// Writes a short content into a blob parameter as a text of that character set, which the server makes a blob of:
/// over the network this saves three round trips.
void GravaBlobCurto(XSQLVAR& var, std::vector<char>& memoria, int conjunto, std::string_view bytes);

/// Writes a value, blobs apart, into a parameter. What the parameter's type cannot hold whole throws TErroConversao,
/// only that a double is rounded to the decimal places of a fixed-point number when that changes nothing in its first
/// twelve digits. A text longer than described is left to the server to refuse.
void GravaValor(XSQLVAR& var, std::vector<char>& memoria, const TValor& valor);

}  // namespace wkd
