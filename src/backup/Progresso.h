#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>

namespace wkd {

/// How far an operation on a whole database is.
struct TProgresso {
    std::string texto;
    int percentual = -1;  // below 0: not known
};

/// Hears of the progress every now and then, and ends the operation by what it throws.
using TAcompanha = std::function<void(const TProgresso&)>;

/// Thrown where an operation ends because the person does not want it any more. No std::exception: no step may take it
/// for an error of its own and go on.
struct TCancelada {};

/// An operation that was not begun, or is given up, with the next step to take.
class TErroDeBackup : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Such as "1.234 KB" or "12 MB".
std::string TamanhoEmTexto(std::uintmax_t bytes);
/// Not 100: that is for the end. Below 0 without a total.
int Percentual(std::uintmax_t feito, std::uintmax_t total);

}  // namespace wkd
