#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace wkd {

/// Paths and UTF-8 text, whatever the platform's own encoding of file names.
inline std::string TextoDoCaminho(const std::filesystem::path& caminho) {
    const auto utf8 = caminho.u8string();
    return std::string(utf8.begin(), utf8.end());
}

inline std::filesystem::path CaminhoDoTexto(std::string_view utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

/// Name of the file alone, as messages show it.
inline std::string NomeDoArquivo(const std::filesystem::path& caminho) { return TextoDoCaminho(caminho.filename()); }

}  // namespace wkd
