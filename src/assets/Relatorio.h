#pragma once

#include <filesystem>

#include "datamodule/DataModulo.h"
#include "package/Pacote.h"

namespace wkd {

/// Loads the package's report layouts ("*.rtm") into TRELATORIOS and copies them into the reports folder, the setting
/// "RELATORIO" of the alias; without that setting a line says that the copy is skipped. A layout that cannot be loaded
/// or copied ends the pass (TErroBanco, std::filesystem::filesystem_error). A file of the folder is replaced whole or
/// not at all.
void AtualizaRelatorio(TDataModulo& dm, const TPastaDeTrabalho& pasta);

/// Packs the layouts ("*.rtm", any letter case) of a folder into a zip archive, which replaces an earlier one only when
/// it is complete. Throws TErroPacote.
void FazBackupDosRelatorios(const std::filesystem::path& pasta, const std::filesystem::path& arquivoZip);

}  // namespace wkd
