#pragma once

#include <ibase.h>

#include <string_view>

#include "values/Erros.h"

namespace wkd {

/// Status vector of one call.
using TEstadoFirebird = ISC_STATUS_ARRAY;

/// The error of a failed call. `comando` is the statement; empty while a connection is being opened.
TErroBanco ErroFirebird(const ISC_STATUS* estado, std::string_view comando);

/// Whether the code is one of the status vector's.
bool TemCodigo(const ISC_STATUS* estado, ISC_STATUS codigo);

/// Throws the error of a call unless it went well.
inline void Confere(const ISC_STATUS* estado, std::string_view comando) {
    if (estado[0] == 1 && estado[1] != 0) throw ErroFirebird(estado, comando);
}

}  // namespace wkd
