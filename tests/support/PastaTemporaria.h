#pragma once

#include <filesystem>
#include <string>

namespace wkd {

/// A new folder of its own under the system's temporary one, removed with all it holds at the end.
class TPastaTemporaria {
  public:
    TPastaTemporaria();
    /// Of this name, which must be free.
    explicit TPastaTemporaria(const std::string& nome);
    ~TPastaTemporaria();
    TPastaTemporaria(const TPastaTemporaria&) = delete;
    TPastaTemporaria& operator=(const TPastaTemporaria&) = delete;

    const std::filesystem::path& Caminho() const { return caminho_; }
    std::filesystem::path operator/(const std::filesystem::path& nome) const { return caminho_ / nome; }

  private:
    std::filesystem::path caminho_;
};

}  // namespace wkd
