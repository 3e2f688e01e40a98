#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace wkd {

/// Why a directory of that name cannot be used as one's own (a link, no directory, somebody else's); empty when it
/// can, or when nothing has the name.
std::string DefeitoDaPasta(const std::filesystem::path& pasta);
/// Creates the directory with access for the current user alone. False when it could not be created.
bool CriaPastaPrivada(const std::filesystem::path& pasta);

/// Folder of one's own below the temporary one, for the current user alone, removed with all it holds at the end.
class TPastaPassageira {
  public:
    /// Throws TErroPacote when none can be made.
    explicit TPastaPassageira(const std::filesystem::path& temporaria = std::filesystem::temp_directory_path());
    ~TPastaPassageira();
    TPastaPassageira(const TPastaPassageira&) = delete;
    TPastaPassageira& operator=(const TPastaPassageira&) = delete;

    const std::filesystem::path& Caminho() const { return caminho_; }

  private:
    std::filesystem::path caminho_;
};

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
