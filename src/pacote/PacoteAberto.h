#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Pacote.h"

namespace wkd {

/// Folder of one's own below the temporary one, for the current user alone, removed with all it holds at the end.
class TPastaPassageira {
  public:
    /// Throws TErroPacote when none can be made.
    TPastaPassageira();
    ~TPastaPassageira();
    TPastaPassageira(const TPastaPassageira&) = delete;
    TPastaPassageira& operator=(const TPastaPassageira&) = delete;

    const std::filesystem::path& Caminho() const { return caminho_; }

  private:
    std::filesystem::path caminho_;
};

/// A package and its files, extracted for as long as the object lives.
class TPacoteAberto {
  public:
    /// Throws TErroPacote for a package that the update could not unpack either.
    explicit TPacoteAberto(const std::filesystem::path& pacote);

    const TPastaDeTrabalho& Pasta() const { return *pasta_; }
    std::uint64_t Bytes() const { return bytes_; }
    /// Entries that were refused or replaced, in words.
    const std::vector<std::string>& Relatos() const { return relatos_; }

  private:
    TPastaPassageira temporaria_;
    std::optional<TPastaDeTrabalho> pasta_;
    std::uint64_t bytes_ = 0;
    std::vector<std::string> relatos_;
};

}  // namespace wkd
