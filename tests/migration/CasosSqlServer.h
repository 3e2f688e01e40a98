#pragma once

#include <filesystem>

#include "datamodule/DataModulo.h"

namespace wkd {

/// Puts into the example database, open under a SQL Server alias, what its package does not bring about: one table for
/// each rare kind of change, the tables of the one-off corrections, a rebuild broken off, a plug-in. The dictionary
/// tables must have their new layout.
void AcrescentaCasos(TDataModulo& dm);

/// The example package with the dictionary of those tables.
void EmpacotaCasos(const std::filesystem::path& pacote);

}  // namespace wkd
