#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Erros.h"
#include "TipoBanco.h"

namespace wkd {

enum class TTipoAutenticacao { Nenhuma = 0, Windows = 1, Servidor = 2 };  // texts "-1", "0", "1"

std::string_view TipoAutenticacaoToStr(TTipoAutenticacao tipo);
TTipoAutenticacao StrToTipoAutenticacao(std::string_view texto);
TTipoAutenticacao IntToTipoAutenticacao(int valor);
/// -1 for the kinds below SQL Server, else 1 or 0 as the stored text is "0" or not.
int TipoAutenticacaoToInt(TTipoBanco banco, TTipoAutenticacao tipo);

/// A named connection of the settings file.
struct TAlias {
    std::string nome;
    std::string tipoBanco;  // text of the kind, as stored
    std::string hostname;
    std::string path;
    std::string database;
    TTipoAutenticacao autenticacao = TTipoAutenticacao::Windows;
    std::string usuario;
    std::string senha;  // plain
};

/// Settings file or alias that is not usable: what() names it and says what to do.
class TErroConfiguracao : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Places where the settings file is looked for; every one a parameter so that tests point it elsewhere.
struct TLocaisDoIni {
    std::filesystem::path pastaPrograma;
    std::filesystem::path pastaProgramFiles;  // "ProgramFilesDir"
    std::filesystem::path desenvolvimento;    // development path
};
TLocaisDoIni LocaisPadraoDoIni();

/// Finds "WKD.ini" (letter case ignored): program folder, its parent, "WKD Software" below the program-files
/// folder, development path. Throws TErroConfiguracao "Nao encontrou o arquivo" + last path tried.
std::filesystem::path LocalizaIni(const TLocaisDoIni& locais);
/// Doubled separators collapsed, but for the leading one of a network path.
std::string SemBarrasDobradas(std::string_view caminho);

/// The aliases of one settings file.
class TAliases {
  public:
    explicit TAliases(std::filesystem::path ini) : ini_(std::move(ini)) {}

    const std::filesystem::path& Caminho() const { return ini_; }
    std::string INILeString(std::string_view secao, std::string_view chave, std::string_view padrao = "") const;
    void INIGravaString(std::string_view secao, std::string_view chave, std::string_view valor) const;

    /// Section names in file order; `escondePadrao` leaves "MENU" out.
    std::vector<std::string> ListaAlias(bool escondePadrao) const;
    bool ExisteAlias(std::string_view nome) const;
    /// Throws TErroConfiguracao "Insira corretamento o nome do Alias!" for an empty name. `tambemPadrao` writes the
    /// same settings under "MENU" as well.
    void AdicionaAlias(const TAlias& alias, bool tambemPadrao) const;
    /// False when there was none.
    bool RemoveAlias(std::string_view nome) const;
    TAlias CarregaAlias(std::string_view nome) const;

  private:
    std::filesystem::path ini_;
};

}  // namespace wkd
