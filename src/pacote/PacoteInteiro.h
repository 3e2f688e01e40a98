#pragma once

#include <cstdint>
#include <filesystem>

#include "DataPacket.h"

namespace wkd {

/// Reads a packet with the content of its blobs, so that a damaged one is found now. Throws TErroPacote.
TDataPacket LePacoteInteiro(const std::filesystem::path& arquivo);
/// Length of the content, all of which is read. Throws TErroPacote when it is damaged.
std::uint64_t BytesDoConteudo(const TValor& valor);

}  // namespace wkd
