#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace wkd {

/// Name of a package entry, taken apart. `recusa` says why it may not be extracted; empty when it may.
struct TNomeDeEntrada {
    std::vector<std::string> partes;  // folders, then the file; "." left out
    bool pasta = false;
    std::string recusa;
};

/// "/" and "\" both separate. Refused: absolute names, "..", drives and streams (":"), control characters,
/// and what is no file's name on Windows.
TNomeDeEntrada AnalisaNomeDeEntrada(std::string_view nome);

/// Why an entry with these external attributes (Unix mode in the upper half) may not be extracted: links and
/// special files. Empty when it may.
std::string RecusaDoTipo(std::uint32_t atributos);

/// Directory that takes the entries of a package. Names ignore letter case: of two entries that differ in it alone
/// the later one stays. Nothing is written through a link, and nothing outside the directory.
class TDestinoDoPacote {
  public:
    /// `relata` gets each entry that was refused or replaced, in words.
    TDestinoDoPacote(std::filesystem::path pasta, std::function<void(std::string)> relata)
        : pasta_(std::move(pasta)), relata_(std::move(relata)) {}

    /// Place of the entry, its folders made; empty (and reported) when a file stands where a folder must be, or the
    /// reverse. Throws TErroPacote when a folder cannot be made.
    std::filesystem::path Lugar(const TNomeDeEntrada& entrada, const std::string& nome);

  private:
    struct TOcupado {
        std::filesystem::path caminho;
        bool pasta = false;
    };

    bool Pasta(const std::string& chave, const std::filesystem::path& caminho, std::filesystem::path& feita);
    std::filesystem::path Arquivo(const std::string& chave, const std::filesystem::path& caminho,
                                  const std::string& nome);

    std::filesystem::path pasta_;
    std::function<void(std::string)> relata_;
    std::unordered_map<std::string, TOcupado> ocupados_;  // by relative name in capitals
};

}  // namespace wkd
