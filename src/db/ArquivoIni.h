#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wkd {

/// An INI file held as its lines, so that writing one key leaves every other line (comments, blank lines, unknown
/// sections, order, line ends, encoding) as it was. Section and key names ignore letter case; a value is everything
/// behind the first "=", blanks at both ends and one pair of quotes taken off, backslashes kept. A file that is not
/// valid UTF-8 is read, and written back, as Windows-1252.
class TArquivoIni {
  public:
    /// Reads the file; a missing one is empty. Throws std::system_error when it cannot be read.
    explicit TArquivoIni(std::filesystem::path caminho);

    std::vector<std::string> Secoes() const;
    bool ExisteSecao(std::string_view secao) const;
    std::optional<std::string> Le(std::string_view secao, std::string_view chave) const;
    void Grava(std::string_view secao, std::string_view chave, std::string_view valor);
    /// False when there is no such section.
    bool ApagaSecao(std::string_view secao);
    /// Writes a new file beside the old one and renames it over: a crash leaves the old or the new one. Mode 0600
    /// when it did not exist. Throws std::system_error.
    void Salva() const;

  private:
    std::filesystem::path caminho_;
    std::vector<std::string> linhas_;
};

}  // namespace wkd
