#include "Relatorio.h"

namespace wkd {

void AtualizaRelatorio(TDataModulo&, const TPastaDeTrabalho&) {}

}  // namespace wkd
