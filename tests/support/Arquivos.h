#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace wkd {

inline void EscreveArquivo(const std::filesystem::path& caminho, std::string_view bytes) {
    std::ofstream(caminho, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

inline std::string LeArquivo(const std::filesystem::path& caminho) {
    std::ifstream arquivo(caminho, std::ios::binary);
    return {std::istreambuf_iterator<char>(arquivo), {}};
}

}  // namespace wkd
