#include <cstddef>
#include <cstdint>
#include <fstream>

#include "Exercicios.h"

/// One program an exercise: WKD_EXERCICIO is its name. The fuzzer's own folder is the temporary one.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t tamanho) {
    const auto arquivo = std::filesystem::temp_directory_path() / "entrada";
    std::filesystem::remove(arquivo);  // contents of the last one may still be mapped
    std::ofstream(arquivo, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(tamanho));
    wkd::WKD_EXERCICIO(arquivo);
    return 0;
}
