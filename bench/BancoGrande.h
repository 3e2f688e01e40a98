#pragma once

#include <filesystem>
#include <memory>

#include "Aliases.h"
#include "Connection.h"
#include "DataPacket.h"

namespace wkd {

inline constexpr int kTabelas = 800;
inline constexpr int kColunas = 25;  // of each table

/// A folder with a Firebird database of 800 tables and 20,000 columns, its dictionary filled, its alias "GRANDE" in a
/// settings file, and a package with the same dictionary. Gone at the end.
class TBancoGrande {
  public:
    TBancoGrande();
    ~TBancoGrande();
    TBancoGrande(const TBancoGrande&) = delete;
    TBancoGrande& operator=(const TBancoGrande&) = delete;

    const std::filesystem::path& Pasta() const { return pasta_; }
    std::filesystem::path Pacote() const { return pasta_ / "pacote.zip"; }
    TAliases Aliases() const { return TAliases(pasta_ / "WKD.ini"); }
    std::unique_ptr<TConnection> Conexao() const;

  private:
    void CriaTabelas(TConnection& banco);
    void EnchePacote();

    std::filesystem::path pasta_;
};

/// The column dictionary of that many tables, as a packet.
TDataPacket DicionarioDeColunas(int tabelas);

}  // namespace wkd
