#pragma once

#include <string>

#include "connection/Connection.h"
#include "dialect/Dialeto.h"

namespace wkd {

/// Bytes of a whole number without scale; 0 for another type.
int BytesDoInteiro(const TColunaFisica& coluna);
/// Whether the server gives every value the same form in the target that the client would.
bool MesmaForma(const TColunaFisica& origem, const TColunaFisica& destino);
/// Condition of the rows whose text is longer than the target takes; empty where none can be.
std::string TextoNaoCabe(const TColunaFisica& origem, const TColunaFisica& destino, const TDialeto& dialeto);

}  // namespace wkd
