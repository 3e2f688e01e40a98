#pragma once

#include <cstddef>
#include <filesystem>
#include <string_view>

namespace wkd {

/// Whole file as read-only memory, for as long as the object lives; the file may lose its name meanwhile.
class TMapeamento {
  public:
    /// Throws std::system_error.
    explicit TMapeamento(const std::filesystem::path& arquivo);
    ~TMapeamento();
    TMapeamento(const TMapeamento&) = delete;
    TMapeamento& operator=(const TMapeamento&) = delete;

    std::string_view Bytes() const { return {static_cast<const char*>(inicio_), tamanho_}; }

  private:
    void* inicio_ = nullptr;
    std::size_t tamanho_ = 0;
};

}  // namespace wkd
