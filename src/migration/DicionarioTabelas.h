#pragma once

#include "Contexto.h"

namespace wkd {

/// Rebuilds the report designer's dictionary, TRBTABLE and TRBFIELD, from SARQUIVO and SATRIB.
void Dicionario_tabelas(TContexto& ctx);
/// Deletes the SARQUIVO rows that the package no longer has, customer tables ("U_") excepted.
void LimpaArquivoInutilizado(TContexto& ctx);

}  // namespace wkd
