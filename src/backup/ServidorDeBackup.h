#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "server/HBNConnection.h"

namespace wkd {

/// How far an operation on a whole database is.
struct TProgresso {
    std::string texto;
    int percentual = -1;  // below 0: not known
};

/// Hears of the progress every now and then, and ends the operation by what it throws.
using TAcompanha = std::function<void(const TProgresso&)>;

/// Thrown where an operation ends because the person does not want it any more. No std::exception: no step may take it
/// for an error of its own and go on.
struct TCancelada {};

/// An operation that was not begun, or is given up, with the next step to take.
class TErroDeBackup : public TErroConhecido {
  public:
    using TErroConhecido::TErroConhecido;
    explicit TErroDeBackup(const std::string& mensagem) : TErroConhecido(TFalha::SemBackup, mensagem) {}
};

/// Such as "1.234 KB" or "12 MB".
std::string TamanhoEmTexto(std::uintmax_t bytes);
/// Not 100: that is for the end. Below 0 without a total.
int Percentual(std::uintmax_t feito, std::uintmax_t total);

/// Size and check sum of a backup file.
struct TArquivoFeito {
    std::uintmax_t tamanho = 0;
    std::string sha256;
};

/// What a backup asks of the server of an alias, in its own words. Databases are named as the driver parameter
/// "Database" names them. Everything throws TErroBanco, TErroDeBackup or std::system_error.
class IServidorDeBackup {
  public:
    virtual ~IServidorDeBackup() = default;

    /// Of backup files, with ".".
    virtual std::string Extensao() const = 0;
    /// Whether backup files lie on this machine.
    virtual bool ArquivosAqui() const = 0;
    /// The alias's own database.
    virtual std::string BancoEmUso() const = 0;
    /// Name for another database beside it: the alias's name with that end.
    virtual std::string NomeDaCopia(const std::string& fim) const = 0;

    /// Makes a backup, in a file that is there, empty, or on the server in one that is not, and brings it down to the
    /// disk. `comecou` is called once the moment that the backup shows is past.
    virtual TArquivoFeito FazBackup(const std::filesystem::path& arquivo, const std::function<void()>& comecou,
                                    const TAcompanha& acompanha) = 0;
    /// The same of everything but rows, for somebody who is to see none; nothing where the server makes no such backup.
    virtual std::optional<TArquivoFeito> FazBackupDoEsquema(const std::filesystem::path& /*arquivo*/,
                                                            const TAcompanha& /*acompanha*/) {
        return std::nullopt;
    }
    /// Makes a database, which must not exist, of a backup. A failure leaves nothing.
    virtual void Restaura(const std::filesystem::path& arquivo, const std::string& banco,
                          const TAcompanha& acompanha) = 0;
    /// Makes an empty database, which must not exist; an empty character set or page size 0 is the server's own.
    virtual void CriaVazio(const std::string& banco, const std::string& conjunto, int pagina) = 0;
    virtual bool Existe(const std::string& banco) = 0;
    /// Throws TErroDeBackup when it exists.
    void ExigeNovo(const std::string& banco);
    virtual void Apaga(const std::string& banco) = 0;
    /// Connection for reading a database as it stands, open.
    virtual std::unique_ptr<TConnection> Abre(const std::string& banco) = 0;

    // The place of the database in use, which nobody has open meanwhile
    /// Whether databases can be renamed.
    virtual bool TrocaNomes() const = 0;
    /// A database takes the place; the one that is there gets the other name, when one is given. Killed anywhere, this
    /// leaves the old one under one of the two names.
    virtual void PoeNoLugar(const std::string& novo, const std::string& antigo) = 0;
    /// The old one, if it is under that name, takes its place again.
    virtual void Devolve(const std::string& antigo) = 0;
    /// Whether that name leads to the database in use too, as PoeNoLugar leaves it when it is killed half way.
    virtual bool MesmoBanco(const std::string& antigo) = 0;

    // What a connection of Abre sees
    /// Whether the database lets nobody in but the one who is: a restore leaves it so until it has come to its end.
    virtual bool FechadoParaUm(TConnection& banco) = 0;
    /// Whether no transaction but the backup's own was under way between the snapshots of two connections.
    virtual bool NinguemEscreveu(TConnection& antes, TConnection& depois) = 0;
    /// Bytes that the files of the database take.
    virtual std::uintmax_t TamanhoNoDisco(TConnection& banco) = 0;

    /// Copies that a proof or a rehearsal could not remove, as far as they can be seen.
    virtual std::vector<std::string> CopiasPassageiras() = 0;

    /// Bytes that the database in use takes, and those that its disk, or that of a folder of backups, has left; nothing
    /// where it cannot be seen.
    virtual std::uintmax_t TamanhoDoBanco() = 0;
    virtual std::optional<std::uintmax_t> EspacoParaCopia() = 0;
    virtual std::optional<std::uintmax_t> EspacoPara(const std::filesystem::path& pasta) = 0;
};

/// A database made by a backup's restore, removed at the end of a scope unless it stays.
class TCopiaPassageira {
  public:
    TCopiaPassageira(IServidorDeBackup& servidor, std::string banco) : servidor_(servidor), banco_(std::move(banco)) {}
    ~TCopiaPassageira();
    TCopiaPassageira(const TCopiaPassageira&) = delete;
    TCopiaPassageira& operator=(const TCopiaPassageira&) = delete;

    /// From now on there is one.
    void Existe() { existe_ = true; }
    void Fica() { existe_ = false; }
    const std::string& Banco() const { return banco_; }

  private:
    IServidorDeBackup& servidor_;
    std::string banco_;
    bool existe_ = false;
};

/// The alias as a part of a file name.
std::string NomeNoDisco(std::string_view alias);

/// The connection is the open one of the alias.
std::unique_ptr<IServidorDeBackup> CriaServidorDeBackup(THBNConnection& conexao);

}  // namespace wkd
