#pragma once

#include <filesystem>
#include <vector>

namespace wkd {

/// Packs files under their names, without folder, into a zip archive. An archive of that name is replaced only when the
/// new one is complete; its folder is made when missing. Throws TErroPacote, the old archive untouched.
void CompactaZip(const std::vector<std::filesystem::path>& arquivos, const std::filesystem::path& arquivoZip);

}  // namespace wkd
