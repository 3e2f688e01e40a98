#include <stdexcept>

#include "Exercicios.h"
#include "package/Pacote.h"

namespace wkd {

namespace fs = std::filesystem;

namespace {

constexpr TLimitesDoPacote kLimites{.entradas = 200, .bytes = 1 << 20, .razao = 200, .bytesLivres = 256 << 10};

std::uintmax_t BytesDe(const fs::path& pasta) {
    std::uintmax_t bytes = 0;
    for (const auto& entrada : fs::recursive_directory_iterator(pasta)) {
        if (entrada.is_symlink()) throw std::logic_error("a link was extracted");
        if (entrada.is_regular_file()) bytes += entrada.file_size();
    }
    return bytes;
}

}  // namespace

void ExercitaZip(const fs::path& arquivo) {
    const auto jaula = arquivo.parent_path() / "jaula";
    fs::remove_all(jaula);
    fs::create_directories(jaula / "destino");
    int progresso = -1;
    try {
        ExtraiPacote(
            arquivo, jaula / "destino",
            [&](int percentual) {
                if (percentual <= progresso || percentual > 100) throw std::logic_error("the progress went back");
                progresso = percentual;
            },
            kLimites);
    } catch (const TErroPacote&) {
    }
    if (std::distance(fs::directory_iterator(jaula), {}) != 1)
        throw std::logic_error("something was extracted beside the folder");
    if (BytesDe(jaula) > kLimites.bytes) throw std::logic_error("more was extracted than the limit");
}

}  // namespace wkd
