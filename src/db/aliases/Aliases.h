#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "aliases/ArquivoIni.h"
#include "connection/Connection.h"

namespace wkd {

/// Scrambles a password for the settings file: reversible, the user name takes part, printable output without
/// characters that mean something in an INI file. Empty stays empty. This keeps the password from a casual reader
/// only; who has the file and this program has the password.
std::string MontaSenha(std::string_view usuario, std::string_view senha);
/// Inverse of MontaSenha. A text that MontaSenha did not make comes back as it is.
std::string DesmontaSenha(std::string_view usuario, std::string_view texto);

struct TAlias;

/// Driver parameters in the order they were added, such as "User_Name=...", "Database=...".
class TParametrosConexao {
  public:
    void Adiciona(std::string_view chave, std::string_view valor) { pares_.emplace_back(chave, valor); }
    /// Value of the first parameter of that name, letter case ignored; empty when there is none.
    std::string Valor(std::string_view chave) const;
    const std::vector<std::pair<std::string, std::string>>& Pares() const { return pares_; }

  private:
    std::vector<std::pair<std::string, std::string>> pares_;
};

/// Parameters of the alias's driver; none for a kind without driver.
TParametrosConexao ParametrosDoAlias(const TAlias& alias);

enum class TTipoAutenticacao { Nenhuma = 0, Windows = 1, Servidor = 2 };  // texts "-1", "0", "1"

std::string_view TipoAutenticacaoToStr(TTipoAutenticacao tipo);
/// An unknown text or number is Nenhuma.
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
    std::string senha;                        // plain
    std::string characterSet;                 // connection character set of Firebird; empty: the driver's choice
    std::string driver;                       // name of the ODBC driver; empty: the first one installed
    std::string encrypt = {};                 // SQL Server, in the words of the driver; empty: its own choice
    std::string trustServerCertificate = {};  // likewise; empty: the certificate is checked
};

/// As a person means it: without blanks around its texts, and a path of Firebird with the separator at its end.
TAlias Arrumado(TAlias alias);
/// What keeps an alias from being of any use, and what to write instead; empty when nothing can be told without asking
/// its server.
std::string DefeitoDoAlias(const TAlias& alias);

/// The aliases of one settings file.
class TAliases {
  public:
    explicit TAliases(std::filesystem::path ini) : ini_(std::move(ini)) {}

    const std::filesystem::path& Caminho() const { return ini_; }
    std::string INILeString(std::string_view secao, std::string_view chave, std::string_view padrao = "") const;
    void INIGravaString(std::string_view secao, std::string_view chave, std::string_view valor) const;

    /// Section names in file order; `escondePadrao` leaves the menu's default alias "MENU" out.
    std::vector<std::string> ListaAlias(bool escondePadrao) const;
    bool ExisteAlias(std::string_view nome) const;
    /// Throws TErroConfiguracao "Insira corretamento o nome do Alias!" for an empty name. Keys beside the
    /// alias's own stay. `tambemPadrao` writes the same settings under "MENU" as well.
    void AdicionaAlias(const TAlias& alias, bool tambemPadrao) const;
    /// Whether the settings under "MENU" are a copy of the alias's.
    bool EhPadrao(std::string_view nome) const;
    /// Of an alias that is there, and of its copy under "MENU".
    void MudaSenha(std::string_view nome, std::string_view senha) const;
    /// False when there was none.
    bool RemoveAlias(std::string_view nome) const;
    /// Throws TErroConfiguracao when the file does not have the alias.
    TAlias CarregaAlias(std::string_view nome) const;

  private:
    std::filesystem::path ini_;
};

}  // namespace wkd
