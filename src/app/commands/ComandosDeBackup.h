#pragma once

#include <filesystem>

#include "commands/LinhaDeComando.h"
#include "commands/Preferencias.h"
#include "process/Programa.h"

namespace wkd {

class THBNConnection;
class TPreferencias;

// Commands on whole databases.

TCodigoDeSaida ComandoBackup(const TAmbiente& ambiente, const TPedeBackup& pedido);
/// 1: the backup is not good.
TCodigoDeSaida ComandoProva(const TAmbiente& ambiente, const TPedeProva& pedido);
TCodigoDeSaida ComandoRestaura(const TAmbiente& ambiente, const TPedeRestaura& pedido);
TCodigoDeSaida ComandoEnsaio(const TAmbiente& ambiente, const TPedeEnsaio& pedido);

/// The folder of backups: that of the wizard's page, which remembers it, else "Backup" in the program's folder, which
/// is made. Empty for a server that keeps the files itself: it has a folder of its own for them.
std::filesystem::path PastaDeBackup(const TAmbiente& ambiente, TPreferencias& preferencias, THBNConnection& conexao);

}  // namespace wkd
