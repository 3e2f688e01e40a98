#pragma once

#include "ServidorDeBackup.h"

namespace wkd {

/// Backup and restore by the service manager. A backup file lies on this machine, whatever machine the server has; the
/// databases lie on the server's.
class TBackupFirebird : public IServidorDeBackup {
  public:
    explicit TBackupFirebird(THBNConnection& conexao) : conexao_(conexao) {}

    std::string Extensao() const override { return ".fbk"; }
    bool ArquivosAqui() const override { return true; }
    std::string BancoEmUso() const override;
    std::string NomeDaCopia(const std::string& fim) const override;
    TArquivoFeito FazBackup(const std::filesystem::path& arquivo, const std::function<void()>& comecou,
                            const TAcompanha& acompanha) override;
    /// Refused where a source speaks of a password: sources go along as they are.
    std::optional<TArquivoFeito> FazBackupDoEsquema(const std::filesystem::path& arquivo,
                                                    const TAcompanha& acompanha) override;
    void Restaura(const std::filesystem::path& arquivo, const std::string& banco, const TAcompanha& acompanha) override;
    void CriaVazio(const std::string& banco, const std::string& conjunto, int pagina) override;
    bool Existe(const std::string& banco) override;
    void Apaga(const std::string& banco) override;
    std::unique_ptr<TConnection> Abre(const std::string& banco) override;
    bool TrocaNomes() const override { return NestaMaquina(); }
    void PoeNoLugar(const std::string& novo, const std::string& antigo) override;
    void Devolve(const std::string& antigo) override;
    bool MesmoBanco(const std::string& antigo) override;
    bool FechadoParaUm(TConnection& banco) override;
    bool NinguemEscreveu(TConnection& antes, TConnection& depois) override;
    std::uintmax_t TamanhoNoDisco(TConnection& banco) override;
    std::vector<std::string> CopiasPassageiras() override;
    std::uintmax_t TamanhoDoBanco() override { return TamanhoNoDisco(conexao_); }
    std::optional<std::uintmax_t> EspacoParaCopia() override;
    std::optional<std::uintmax_t> EspacoPara(const std::filesystem::path& pasta) override;

  private:
    /// Whether the embedded engine has the database, so that its file can be seen.
    bool NestaMaquina() const { return conexao_.RetornaDadosConexao().hostname.empty(); }
    void DescartaPedaco(const std::string& banco) noexcept;
    /// Of a database on this machine.
    std::filesystem::path PastaDoBanco() const;

    THBNConnection& conexao_;
};

}  // namespace wkd
