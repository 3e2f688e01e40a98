#pragma once

#include <filesystem>
#include <string>

namespace wkd {

/// Why a directory of that name cannot be used as one's own (a link, no directory, somebody else's); empty when it
/// can, or when nothing has the name.
std::string DefeitoDaPasta(const std::filesystem::path& pasta);
/// Creates the directory with access for the current user alone. False when it could not be created.
bool CriaPastaPrivada(const std::filesystem::path& pasta);

}  // namespace wkd
