#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "values/Erros.h"

namespace wkd {

/// Folder of the program file.
std::filesystem::path PastaDoPrograma();

/// Places where the settings file is looked for.
struct TLocaisDoIni {
    std::filesystem::path pastaPrograma;
    std::filesystem::path pastaProgramFiles;  // "ProgramFilesDir"
    std::filesystem::path desenvolvimento;    // the file itself; looked for only when the path is absolute here
};
TLocaisDoIni LocaisPadraoDoIni();

/// Finds "WKD.ini" (letter case ignored): program folder, its parent, "WKD Software" and "WKD Software/HBN" below
/// the program-files folder, development path. Throws TErroConfiguracao "Nao encontrou o arquivo" + last path tried,
/// and on a second line what to do.
std::filesystem::path LocalizaIni(const TLocaisDoIni& locais);
/// Doubled separators, "\" or "/", collapsed, but for the leading two of a network path.
std::string SemBarrasDobradas(std::string_view caminho);

/// Settings file or alias that is not usable: what() names it and says what to do.
class TErroConfiguracao : public TErroConhecido {
  public:
    explicit TErroConfiguracao(const std::string& mensagem, TFalha falha = TFalha::Configuracao)
        : TErroConhecido(falha, mensagem) {}
};

/// An INI file held as its lines, so that writing one key leaves every other line (comments, blank lines, unknown
/// sections, order, line ends, encoding) as it was. Section and key names ignore letter case; a value is everything
/// behind the first "=", blanks at both ends and one pair of quotes taken off, backslashes kept. Of sections or keys
/// of the same name the first counts. A file that is not valid UTF-8 is read, and written back, as Windows-1252.
class TArquivoIni {
  public:
    /// Reads the file; a missing one is empty. Throws TErroConfiguracao when it cannot be read or is UTF-16.
    explicit TArquivoIni(std::filesystem::path caminho);

    /// Names in file order, each once.
    std::vector<std::string> Secoes() const;
    bool ExisteSecao(std::string_view secao) const;
    std::optional<std::string> Le(std::string_view secao, std::string_view chave) const;
    /// Any value without line breaks reads back equal. Throws TErroConfiguracao for a line break, or a name that the
    /// file format cannot hold.
    void Grava(std::string_view secao, std::string_view chave, std::string_view valor);
    /// Comments just above the next section stay. False when there is no such section.
    bool ApagaSecao(std::string_view secao);
    /// Replaces the file at once: a crash leaves the old or the new one. Mode 0600 when it did not exist. Throws
    /// TErroConfiguracao.
    void Salva() const;

  private:
    std::string Bytes() const;
    std::optional<std::size_t> ProcuraSecao(std::string_view secao) const;
    std::optional<std::size_t> ProcuraChave(std::string_view secao, std::string_view chave) const;
    std::size_t FimDaSecao(std::size_t cabecalho) const;
    std::size_t CriaSecao(std::string_view secao);
    void Insere(std::size_t posicao, std::string texto);

    std::filesystem::path caminho_;
    std::vector<std::string> linhas_;  // UTF-8, each with its line end
    std::string fimDeLinha_ = "\n";
    bool bom_ = false;
    bool ansi_ = false;
};

}  // namespace wkd
