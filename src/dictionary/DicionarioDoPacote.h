#pragma once

#include <filesystem>
#include <string_view>

#include "DataPacket.h"

namespace wkd {

/// The packets of a package that hold the new dictionary; without them it is none.
inline constexpr std::string_view kSarquivo = "SARQUIVO.WKD", kSatrib = "SAtrib.WKD";

/// Reads the packet of that role. Throws TErroPacote when there is none (`arquivo` empty), when it lacks a column that
/// an update needs, and when it has no rows.
TDataPacket LeSarquivo(const std::filesystem::path& arquivo);
TDataPacket LeSatrib(const std::filesystem::path& arquivo);

}  // namespace wkd
