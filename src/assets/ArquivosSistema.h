#pragma once

#include "DataModulo.h"
#include "Pacote.h"

namespace wkd {

/// Loads the records of the package file "ARQUIVOS" into TARQ_VER; a file's earlier record is replaced.
void AtualizaArquivosSistema(TDataModulo& dm, const TPastaDeTrabalho& pasta);

}  // namespace wkd
