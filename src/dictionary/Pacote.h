#pragma once

#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace wkd {

/// A package or packet that cannot be used: message with file, place (offset or line) and cause.
class TErroPacote : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Working directory "AtualWkd" below the temporary directory, for the current user alone. Holds the lock file that
/// keeps a second run out; both go with the object.
class TPastaDeTrabalho {
  public:
    /// Takes the lock. Throws TErroPacote when another run holds it, or when the name is a link or somebody else's.
    explicit TPastaDeTrabalho(const std::filesystem::path& temporaria = std::filesystem::temp_directory_path());
    ~TPastaDeTrabalho();
    TPastaDeTrabalho(const TPastaDeTrabalho&) = delete;
    TPastaDeTrabalho& operator=(const TPastaDeTrabalho&) = delete;

    const std::filesystem::path& Caminho() const { return caminho_; }
    /// Removes the directory with its contents (errors ignored) and creates it anew.
    void Recria();

    /// Files of that extension (".wkd", any letter case), by name in capitals.
    std::vector<std::filesystem::path> Arquivos(std::string_view extensao) const;
    /// The file of that name, letter case ignored; empty when there is none.
    std::filesystem::path Arquivo(std::string_view nome) const;

  private:
    std::filesystem::path caminho_;
    std::filesystem::path trava_;
    int travaAberta_ = -1;
};

struct TLimitesDoPacote {
    std::size_t entradas = 100'000;
    std::uint64_t bytes = 4ULL << 30;        // extracted, all entries together
    std::uint64_t razao = 200;               // extracted to packed, once more than `bytesLivres` are extracted
    std::uint64_t bytesLivres = 256ULL << 20;
};

/// Extracts all entries into `destino`. Entries that would leave it (absolute, "..", links) are not extracted; their
/// reports are returned. `progresso` gets 0 to 100. Throws TErroPacote when the file is no zip archive, is damaged
/// or exceeds a limit.
std::vector<std::string> ExtraiPacote(const std::filesystem::path& pacote, const std::filesystem::path& destino,
                                      const std::function<void(int)>& progresso, const TLimitesDoPacote& limites = {});

}  // namespace wkd
