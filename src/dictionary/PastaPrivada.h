#pragma once

#include <filesystem>
#include <string>

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

}  // namespace wkd
