#include "PacoteAberto.h"

namespace wkd {

namespace fs = std::filesystem;

TPacoteAberto::TPacoteAberto(const fs::path& pacote) {
    pasta_.emplace(temporaria_.Caminho());
    relatos_ = ExtraiPacote(pacote, pasta_->Caminho(), {});
    bytes_ = fs::file_size(pacote);
}

}  // namespace wkd
