#pragma once

#include "ServidorDeBackup.h"

namespace wkd {

// Statements of backup and restore on a SQL Server.

std::string BackupTSql(std::string_view banco, std::string_view arquivo);
/// Fails for a file that does not hold a whole backup.
std::string VerificaTSql(std::string_view arquivo);
std::string ListaDoBackupTSql(std::string_view arquivo);
/// `lugares`: each file of the backup by its logical name, and where it goes.
std::string RestauraTSql(std::string_view banco, std::string_view arquivo,
                         const std::vector<std::pair<std::string, std::string>>& lugares);
/// The three statements that give a database, which nobody uses, another name.
std::vector<std::string> RenomeiaTSql(std::string_view de, std::string_view para);

std::string CriaTSql(std::string_view banco);
std::string ApagaTSql(std::string_view banco);
/// How many databases of that name a restore has begun and not finished.
std::string PedacosTSql(std::string_view banco);
/// `unidade`: "D:".
std::string EspacoTSql(std::string_view unidade);
inline constexpr std::string_view kTamanhoTSql =
    "select sum(cast(fileproperty(name, 'SpaceUsed') as bigint)) * 8192 as total from sys.database_files"
    " where type = 0";

/// Backup and restore by the server's own statements: a backup file lies on the server's machine, under the name that
/// it is to keep, since the server neither renames nor removes one; it counts once the server has read it through. A
/// database that is replaced is renamed.
class TBackupSqlServer : public IServidorDeBackup {
  public:
    explicit TBackupSqlServer(THBNConnection& conexao) : conexao_(conexao) {}

    std::string Extensao() const override { return ".bak"; }
    bool ArquivosAqui() const override { return false; }
    std::string BancoEmUso() const override { return conexao_.Parametros().Valor("Database"); }
    std::string NomeDaCopia(const std::string& fim) const override { return conexao_.Alias() + fim; }
    TArquivoFeito FazBackup(const std::filesystem::path& arquivo, const std::function<void()>& comecou,
                            const TAcompanha& acompanha) override;
    void Restaura(const std::filesystem::path& arquivo, const std::string& banco, const TAcompanha& acompanha) override;
    void CriaVazio(const std::string& banco, const std::string& conjunto, int pagina) override;
    bool Existe(const std::string& banco) override;
    void Apaga(const std::string& banco) override;
    std::unique_ptr<TConnection> Abre(const std::string& banco) override;
    bool TrocaNomes() const override { return true; }
    void PoeNoLugar(const std::string& novo, const std::string& antigo) override;
    void Devolve(const std::string& antigo) override;
    bool MesmoBanco(const std::string&) override { return false; }
    bool FechadoParaUm(TConnection&) override { return false; }
    bool NinguemEscreveu(TConnection&, TConnection&) override { return false; }
    std::uintmax_t TamanhoNoDisco(TConnection& banco) override;
    std::vector<std::string> CopiasPassageiras() override;
    std::uintmax_t TamanhoDoBanco() override;
    std::optional<std::uintmax_t> EspacoParaCopia() override { return std::nullopt; }
    std::optional<std::uintmax_t> EspacoPara(const std::filesystem::path& pasta) override;

  private:
    void Renomeia(const std::string& de, const std::string& para);
    void DescartaPedaco(TConnection& mestre, const std::string& banco) noexcept;
    std::vector<std::pair<std::string, std::string>> Lugares(TConnection& mestre, const std::string& arquivo,
                                                             const std::string& banco);

    THBNConnection& conexao_;
};

}  // namespace wkd
