#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace wkd {

/// Lock file held by one process at a time, in which the holder says who he is. The system releases it when the
/// process ends, however it ends; the file itself goes with the object.
class TTrava {
  public:
    /// Null when another process holds the lock. Throws TErroPacote when the name is a link, no ordinary file or
    /// somebody else's.
    static std::unique_ptr<TTrava> Tenta(const std::filesystem::path& arquivo);
    /// What the process that holds the lock has written into it; nothing when nobody holds it.
    static std::optional<std::string> QuemTem(const std::filesystem::path& arquivo);
    ~TTrava();
    TTrava(const TTrava&) = delete;
    TTrava& operator=(const TTrava&) = delete;

    /// Replaces the text in the file; what cannot be written is left out.
    void Escreve(std::string_view texto);

  private:
#ifdef _WIN32
    using TAberta = void*;
#else
    using TAberta = int;
#endif
    TTrava(std::filesystem::path arquivo, TAberta aberta) : arquivo_(std::move(arquivo)), aberta_(aberta) {}

    std::filesystem::path arquivo_;
    TAberta aberta_;
};

}  // namespace wkd
