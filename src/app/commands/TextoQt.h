#pragma once

#include <QString>
#include <filesystem>
#include <string>
#include <string_view>

namespace wkd {

// Texts of the engine (UTF-8) as texts of the window, and back.

inline QString Q(std::string_view texto) {
    return QString::fromUtf8(texto.data(), static_cast<qsizetype>(texto.size()));
}
inline QString QCaminho(const std::filesystem::path& caminho) { return QString::fromStdU16String(caminho.u16string()); }
inline std::string S(const QString& texto) { return texto.toStdString(); }
inline std::filesystem::path Caminho(const QString& texto) { return {texto.toStdU16String()}; }

}  // namespace wkd
