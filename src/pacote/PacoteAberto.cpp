#include "PacoteAberto.h"

#include <random>

#include "PastaPrivada.h"

namespace wkd {

namespace fs = std::filesystem;

TPastaPassageira::TPastaPassageira() {
    std::random_device acaso;
    for (int tentativa = 0; tentativa < 100; ++tentativa) {
        caminho_ = fs::temp_directory_path() / ("wkd-pacote-" + std::to_string(acaso()));
        if (!fs::exists(caminho_) && CriaPastaPrivada(caminho_)) return;
    }
    throw TErroPacote("Não foi possível criar uma pasta temporária em '" + fs::temp_directory_path().string() +
                      "'. Verifique as permissões e o espaço em disco.");
}

TPastaPassageira::~TPastaPassageira() {
    std::error_code erro;
    fs::remove_all(caminho_, erro);
}

TPacoteAberto::TPacoteAberto(const fs::path& pacote) {
    pasta_.emplace(temporaria_.Caminho());
    relatos_ = ExtraiPacote(pacote, pasta_->Caminho(), {});
    bytes_ = fs::file_size(pacote);
}

}  // namespace wkd
