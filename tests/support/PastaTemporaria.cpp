#include "PastaTemporaria.h"

#include <random>
#include <stdexcept>
#include <string>

namespace wkd {

TPastaTemporaria::TPastaTemporaria() {
    std::random_device acaso;
    for (int tentativa = 0; tentativa < 100; ++tentativa) {
        caminho_ = std::filesystem::temp_directory_path() / ("wkd-" + std::to_string(acaso()));
        if (std::filesystem::create_directory(caminho_)) return;
    }
    throw std::runtime_error("no temporary folder could be made");
}

TPastaTemporaria::TPastaTemporaria(const std::string& nome) : caminho_(std::filesystem::temp_directory_path() / nome) {
    if (!std::filesystem::create_directory(caminho_)) throw std::runtime_error(caminho_.string() + " is there already");
}

TPastaTemporaria::~TPastaTemporaria() {
    std::error_code ignorado;
    std::filesystem::remove_all(caminho_, ignorado);
}

}  // namespace wkd
