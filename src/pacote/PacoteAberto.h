#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Pacote.h"
#include "PastaPrivada.h"

namespace wkd {

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
