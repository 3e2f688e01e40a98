#pragma once

#include "datamodule/DataModulo.h"
#include "package/Pacote.h"

namespace wkd {

/// Loads the records of the package file "ARQUIVOS" into TARQ_VER; a file's earlier record is replaced, names compared
/// without regard to letter case. A record that the table refuses is reported (error list, run log) and the next one
/// follows. Throws TErroPacote for a missing or unreadable file, TErroBanco when TARQ_VER cannot be read.
void AtualizaArquivosSistema(TDataModulo& dm, const TPastaDeTrabalho& pasta);

}  // namespace wkd
