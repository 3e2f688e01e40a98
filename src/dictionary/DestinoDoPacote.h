#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <unordered_map>

#include "NomeDeEntrada.h"

namespace wkd {

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
