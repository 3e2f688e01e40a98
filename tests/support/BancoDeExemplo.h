#pragma once

#include <filesystem>
#include <string>

namespace wkd {

/// The example database of an older release, made once for the whole test program; whoever changes it takes a copy.
const std::filesystem::path& BancoDeExemplo();

/// Section of a settings file: alias of a Firebird database of that folder.
std::string SecaoDoAlias(const std::string& alias, const std::filesystem::path& pasta, const std::string& banco);

}  // namespace wkd
