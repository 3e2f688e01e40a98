#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace wkd {

/// SHA-256 (FIPS 180-4) of bytes that come in pieces.
class TSha256 {
  public:
    void Soma(std::string_view bytes);
    /// The sum in hexadecimal digits. Once, at the end.
    std::string Valor();

  private:
    void Bloco(const unsigned char* bloco);

    std::array<std::uint32_t, 8> estado_{0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                         0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    std::array<unsigned char, 64> resto_{};
    std::size_t noResto_ = 0;
    std::uint64_t bytes_ = 0;
};

/// Of a whole file; `acompanha` hears how many bytes were read. Throws std::system_error.
std::string Sha256DoArquivo(const std::filesystem::path& arquivo,
                            const std::function<void(std::uintmax_t)>& acompanha = {});

}  // namespace wkd
