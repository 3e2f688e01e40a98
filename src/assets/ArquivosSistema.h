#pragma once

#include <filesystem>
#include <memory>

#include "datamodule/DataModulo.h"
#include "package/Pacote.h"
#include "values/Valor.h"

namespace wkd {

/// Content of a file, read in pieces when it is needed. Throws std::system_error when it cannot be read.
std::shared_ptr<const TConteudo> ConteudoDeArquivo(const std::filesystem::path& arquivo);

/// Loads the records of the package file "ARQUIVOS" into TARQ_VER; a file's earlier record is replaced, names compared
/// without regard to letter case. A record that the table refuses is reported (error list, run log) and the next one
/// follows. Throws TErroPacote for a missing or unreadable file, TErroBanco when TARQ_VER cannot be read.
void AtualizaArquivosSistema(TDataModulo& dm, const TPastaDeTrabalho& pasta);

}  // namespace wkd
