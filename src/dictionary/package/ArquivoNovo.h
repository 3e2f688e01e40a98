#pragma once

#include <cstdio>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace wkd {

/// File that did not exist before; an existing name, a link included, is an error. Every operation throws
/// TErroPacote with the system's cause. One that was not closed by Fecha() goes with the object.
class TArquivoNovo {
  public:
    explicit TArquivoNovo(std::filesystem::path caminho);
    ~TArquivoNovo();
    TArquivoNovo(const TArquivoNovo&) = delete;
    TArquivoNovo& operator=(const TArquivoNovo&) = delete;

    void Grava(std::string_view bytes);
    /// The bytes are stored when it returns.
    void Fecha();

  private:
    void Apaga() noexcept;

    std::filesystem::path caminho_;
    std::FILE* arquivo_;
};

/// Throws TErroPacote for a path that cannot be written.
[[noreturn]] void NaoGrava(const std::filesystem::path& caminho, std::error_code erro);

}  // namespace wkd
