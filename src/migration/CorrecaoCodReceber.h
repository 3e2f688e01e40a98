#pragma once

#include <span>

#include "Contexto.h"
#include "CorrecoesLista.h"

namespace wkd {

/// Makes COD_RELACIONA of TCRTLCHQ and TCHQCANC a text of 11 characters. The first failing step ends the sequence and
/// its error is thrown, after key and indexes that the steps took away have been created again.
void AjustaCodReceber(TContexto& ctx, std::span<const TTextoPorTipo> passos);

}  // namespace wkd
