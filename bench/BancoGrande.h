#pragma once

#include <filesystem>
#include <memory>

#include "BancoOdbc.h"
#include "PastaTemporaria.h"
#include "aliases/Aliases.h"
#include "connection/Connection.h"
#include "context/Contexto.h"
#include "packet/DataPacket.h"

namespace wkd {

/// In the place of a Firebird server: the SQL Server of WKD_SQLSERVER. One database there at a time.
inline constexpr std::string_view kSqlServer = "sql-server";

inline constexpr int kTabelas = 800;
inline constexpr int kColunas = 25;  // of each table

/// A folder with a database of 800 tables, or fewer, and 25 times as many columns, its dictionary filled, its
/// alias "GRANDE" in a settings file, and a package with the same dictionary. Gone at the end.
class TBancoGrande {
  public:
    /// `servidor` is "host/port", the embedded engine when empty, or kSqlServer.
    TBancoGrande(const std::string& servidor, int tabelas);

    const std::filesystem::path& Pasta() const { return pasta_.Caminho(); }
    int Tabelas() const { return tabelas_; }
    /// "800 tabelas e 20000 colunas".
    std::string Tamanho() const;
    TAliases Aliases() const { return TAliases(pasta_ / "WKD.ini"); }
    /// An unattended run of the package on the alias.
    TOpcoes Opcoes() const { return OpcoesEm(Pasta()); }
    static TOpcoes OpcoesEm(const std::filesystem::path& pasta);
    std::unique_ptr<TConnection> Conexao() const;

  private:
    void CriaNoFirebird(const std::string& servidor);
    void CriaNoSqlServer();
    void EnchePacote();

    const int tabelas_;
    TPastaTemporaria pasta_;
    std::unique_ptr<TBancoSqlServer> sqlServer_;  // or, on Firebird,
    TParametrosConexao parametros_;
};

/// The statement in the words of SQL Server.
std::string EmTSql(std::string comando);

/// The column dictionary of that many tables, as a packet.
TDataPacket DicionarioDeColunas(int tabelas);

}  // namespace wkd
