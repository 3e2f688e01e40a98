#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "Arquivos.h"
#include "Backup.h"
#include "BancoDeExemplo.h"
#include "BancoTemporario.h"
#include "Instantaneo.h"
#include "PastaTemporaria.h"
#include "Prova.h"
#include "ServidorFirebird.h"
#include "Troca.h"
#include "firebird/ConexaoFirebird.h"
#include "server/HBNConnection.h"

namespace wkd {

inline const TAcompanha kNinguem = [](const TProgresso&) {};

/// The example database as the alias "LOJA" of a folder, of the embedded engine or of a server.
class TLojaDeBackup {
  public:
    explicit TLojaDeBackup(const std::string& servidor = "") : servidor_(servidor) {
        std::filesystem::copy_file(BancoDeExemplo(), pasta_ / "loja.fdb");
        std::filesystem::create_directory(Backups());
        std::string secao = SecaoDoAlias("LOJA", pasta_.Caminho(), "loja.fdb");
        secao.replace(secao.find("Hostname=\n"), 10, "Hostname=" + servidor + "\n");
        secao.replace(secao.find("Password=\n"), 10, "Password=" + MontaSenha("SYSDBA", "masterkey") + "\n");
        EscreveArquivo(pasta_ / "WKD.ini", secao);
        conexao_ = std::make_unique<THBNConnection>(TAliases(pasta_ / "WKD.ini"));
        conexao_->SetAlias("LOJA");
        conexao_->Open();
    }

    THBNConnection& Conexao() { return *conexao_; }
    std::filesystem::path operator/(const std::filesystem::path& nome) const { return pasta_ / nome; }
    const std::filesystem::path& Pasta() const { return pasta_.Caminho(); }
    std::filesystem::path Backups() const { return pasta_ / "backups"; }

    TBackupFeito Backup(int guarda = 0) { return FazBackup(*conexao_, {"LOJA", Backups(), guarda}, kNinguem); }
    TVeredito Prova(const std::filesystem::path& arquivo, const std::string& banco = "") {
        return ProvaBackup(*conexao_, {arquivo, banco}, kNinguem);
    }
    TRestauracao Restaura(const std::filesystem::path& arquivo) {
        return RestauraNaOriginal(*conexao_, {"LOJA", arquivo, Backups()}, kNinguem);
    }

    /// Parameter "Database" of a file of the folder.
    std::string Banco(const std::string& nome) const {
        return (servidor_.empty() ? "" : servidor_ + ":") + (pasta_ / nome).string();
    }
    std::unique_ptr<TConnection> Outra(const std::string& nome = "loja.fdb") const {
        auto conexao = CriaConexaoFirebird(ParametrosFirebird(pasta_ / nome, servidor_));
        conexao->Open();
        return conexao;
    }
    TInstantaneo Conteudo(const std::string& nome = "loja.fdb") const {
        const auto conexao = Outra(nome);
        conexao->StartInstantaneo();
        return TiraInstantaneo(*conexao, kNinguem);
    }
    /// Names of the files of a folder, sorted, without those of every store.
    std::vector<std::string> Arquivos(const std::filesystem::path& pasta) const;

  private:
    static std::string MontaSenha(const std::string& usuario, const std::string& senha);

    std::string servidor_;
    TPastaTemporaria pasta_;
    std::unique_ptr<THBNConnection> conexao_;
};

}  // namespace wkd
