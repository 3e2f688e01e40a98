#pragma once

#include "DataModulo.h"
#include "Pacote.h"

namespace wkd {

/// Loads the package's report layouts ("*.rtm") into TRELATORIOS and copies them into the reports folder of the alias.
void AtualizaRelatorio(TDataModulo& dm, const TPastaDeTrabalho& pasta);

}  // namespace wkd
