#pragma once

#include <ibase.h>

#include <string_view>
#include <vector>

#include "Campo.h"

namespace wkd {

/// Column of a result set as the rest of the program knows it.
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
