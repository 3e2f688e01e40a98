#pragma once

#include <filesystem>
#include <vector>

#include "DataModulo.h"
#include "Pacote.h"
#include "ReconstrucoesAbertas.h"

namespace wkd {

/// Empties and refills the system tables from the package's "*.wkd" files, but the two dictionary snapshots. One
/// transaction a table: after an error the next file follows. Returns the files whose table, or one of whose columns,
/// does not exist yet, and those that failed or have to wait: a column may be too narrow so far, a rebuild open.
std::vector<std::filesystem::path> AtualizaSistema(TDataModulo& dm, const TPastaDeTrabalho& pasta,
                                                   const TReconstrucoesAbertas& abertas = {});
/// Loads the files that AtualizaSistema returned, once the tables have been brought up; what fails now is reported
/// (error list, run log).
void RecarregaAdiados(TDataModulo& dm, const std::vector<std::filesystem::path>& arquivos);

}  // namespace wkd
