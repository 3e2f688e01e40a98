#pragma once

#include "context/Contexto.h"

namespace wkd {

/// Section of TINI, and its keys, with the passes that ran and are not to run again.
inline constexpr std::string_view kSecaoUmaVez = "HBN4", kLookupFisico = "LOOKUPFISICO", kNvarchar = "VARCHAR_NVARCAR";

/// Removes the SARQUIVO rows whose module and table occur more than once, the first one included: they come back from
/// the package.
void VerificaDuplicidadeSarquivo(TContexto& ctx);

/// Deletes the SATRIB rows whose table is not in SARQUIVO.
void ApagaAtributosOrfaos(TContexto& ctx);
/// Deletes the SLOOKUP rows whose table is not in SARQUIVO.
void AtualizaLookup(TContexto& ctx);

/// Writes each column's dictionary default into the rows where the column is NULL. A failing update is passed over.
void AtualizaValorPadrao(TContexto& ctx);

/// Tests every table of the package for a primary key and creates a missing one; what cannot be created is reported.
void verificaIndicesPrimarios(TContexto& ctx);

/// Once per database: fills every lookup column from its lookup table.
void AtualizaLookupFisico(TContexto& ctx);

/// Rebuilds the report designer's dictionary, TRBTABLE and TRBFIELD, from SARQUIVO and SATRIB.
void Dicionario_tabelas(TContexto& ctx);
/// Deletes the SARQUIVO rows that the package no longer has, customer tables ("U_") excepted.
void LimpaArquivoInutilizado(TContexto& ctx);

}  // namespace wkd
