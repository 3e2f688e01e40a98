#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "values/Erros.h"

namespace wkd {

class TTrava;

/// A package or packet that cannot be used: message with file, place (offset or line) and cause.
class TErroPacote : public TErroConhecido {
  public:
    explicit TErroPacote(const std::string& mensagem, TFalha falha = TFalha::Pacote)
        : TErroConhecido(falha, mensagem) {}
};

/// Working directory "AtualWkd" below the temporary directory, for the current user alone, guarded by the lock file
/// "AtualWkd.lock" beside it; both go with the object, the lock also with the process. While a run on another database
/// has it, "AtualWkd2" is taken, "AtualWkd3" and so on.
class TPastaDeTrabalho {
  public:
    /// Takes a lock and makes the directory, empty. Throws TErroPacote when the name of either is a link or somebody
    /// else's.
    explicit TPastaDeTrabalho(const std::filesystem::path& temporaria = std::filesystem::temp_directory_path());
    ~TPastaDeTrabalho();
    TPastaDeTrabalho(const TPastaDeTrabalho&) = delete;
    TPastaDeTrabalho& operator=(const TPastaDeTrabalho&) = delete;

    const std::filesystem::path& Caminho() const { return caminho_; }
    /// Removes the directory with its contents (errors ignored) and creates it anew. Links inside are removed, not
    /// followed. Throws TErroPacote when an empty directory cannot be had.
    void Recria();

    /// Files of that extension (".wkd", any letter case), by name in capitals.
    std::vector<std::filesystem::path> Arquivos(std::string_view extensao) const;
    /// The file of that name, letter case ignored; empty when there is none.
    std::filesystem::path Arquivo(std::string_view nome) const;

  private:
    std::unique_ptr<TTrava> trava_;
    std::filesystem::path caminho_;
};

struct TLimitesDoPacote {
    std::size_t entradas = 100'000;
    std::uint64_t bytes = 4ULL << 30;  // extracted, all entries together
    std::uint64_t razao = 200;         // extracted to packed, once more than `bytesLivres` are extracted
    std::uint64_t bytesLivres = 256ULL << 20;
};

/// Extracts all entries into `destino`, sub-folders included. Entries that would leave it (absolute, "..", drive,
/// link) are not extracted; their reports are returned. Of entries whose names differ in letter case alone the last
/// one stays, reported too. `progresso` gets 0 to 100, by bytes. Throws TErroPacote when the file is no zip archive,
/// is damaged or exceeds a limit, and when a file cannot be written.
std::vector<std::string> ExtraiPacote(const std::filesystem::path& pacote, const std::filesystem::path& destino,
                                      const std::function<void(int)>& progresso, const TLimitesDoPacote& limites = {});

/// Packs files under their names, without folder, into a zip archive. An archive of that name is replaced only when the
/// new one is complete; its folder is made when missing. Throws TErroPacote, the old archive untouched.
void CompactaZip(const std::vector<std::filesystem::path>& arquivos, const std::filesystem::path& arquivoZip);

}  // namespace wkd
