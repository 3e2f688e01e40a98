#include "ArquivosSistema.h"

namespace wkd {

void AtualizaArquivosSistema(TDataModulo&, const TPastaDeTrabalho&) {}

}  // namespace wkd
