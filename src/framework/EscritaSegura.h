#pragma once

#include <filesystem>
#include <string_view>

namespace wkd {

/// Writes a file beside `caminho`, down to the disk, and renames it over: a crash leaves the old content or the new
/// one. A link is followed. The old file's mode and owner stay; a new file is for its owner alone. Throws
/// std::system_error, the old file untouched.
void SubstituiArquivo(const std::filesystem::path& caminho, std::string_view bytes);

/// The same with a whole file that stands beside `caminho` already and is gone afterwards, also after a failure. A file
/// system without modes and owners is no failure here.
void SubstituiPor(const std::filesystem::path& novo, const std::filesystem::path& caminho);

/// Waits until all that was written to a file, whoever wrote it, has come down to the disk. Throws std::system_error.
void LevaAoDisco(const std::filesystem::path& caminho);

}  // namespace wkd
