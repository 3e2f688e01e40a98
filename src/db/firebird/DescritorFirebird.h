#pragma once

#include <ibase.h>

#include <cstddef>
#include <memory>
#include <vector>

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

}  // namespace wkd
