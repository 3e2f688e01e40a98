#include "BackupSqlServer.h"

#include "package/Caminho.h"
#include "rows/WKDQuery.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr std::string_view kMestre = "master";

std::string Colchetes(std::string_view nome) { return "[" + Troca(nome, "]", "]]") + "]"; }
std::string Literal(std::string_view texto) { return "N" + Aspas(texto); }

/// Numbers of the server's own messages end before: another one is of a server that speaks T-SQL and has no backups.
constexpr std::int64_t kSemBackups = 50'000;

template <class TTrabalho>
auto SeHaBackups(const TTrabalho& trabalho) {
    try {
        return trabalho();
    } catch (const TErroBanco& erro) {
        if (erro.CodigoNativo() < kSemBackups) throw;
        TErro dados = erro.Dados();
        dados.falha = TFalha::SemServico;
        throw TErroBanco(std::move(dados));
    }
}

/// With the separator that the path uses itself.
std::string PastaDoServidor(const std::string& caminho) { return caminho.substr(0, caminho.find_last_of("/\\") + 1); }

}  // namespace

std::string BackupTSql(std::string_view banco, std::string_view arquivo) {
    return "backup database " + Colchetes(banco) + " to disk = " + Literal(arquivo) +
           " with copy_only, noinit, checksum";
}

std::string VerificaTSql(std::string_view arquivo) {
    return "restore verifyonly from disk = " + Literal(arquivo) + " with checksum";
}

std::string ListaDoBackupTSql(std::string_view arquivo) {
    return "restore filelistonly from disk = " + Literal(arquivo);
}

std::string RestauraTSql(std::string_view banco, std::string_view arquivo,
                         const std::vector<std::pair<std::string, std::string>>& lugares) {
    std::string comando = "restore database " + Colchetes(banco) + " from disk = " + Literal(arquivo) + " with ";
    for (const auto& [nome, lugar] : lugares) comando += "move " + Literal(nome) + " to " + Literal(lugar) + ", ";
    return comando + "checksum";
}

std::string CriaTSql(std::string_view banco) { return "create database " + Colchetes(banco); }

std::string ApagaTSql(std::string_view banco) { return "drop database " + Colchetes(banco); }

std::string PedacosTSql(std::string_view banco) {
    return "select count(*) as total from sys.databases where name = " + Literal(banco) +
           " and state_desc = 'RESTORING'";
}

std::string EspacoTSql(std::string_view unidade) {
    return "select free_space_in_bytes as LIVRES from sys.dm_os_enumerate_fixed_drives where fixed_drive_path like " +
           Literal(std::string(unidade) + "%");
}

std::vector<std::string> RenomeiaTSql(std::string_view de, std::string_view para) {
    return {"alter database " + Colchetes(de) + " set single_user with no_wait",
            "alter database " + Colchetes(de) + " modify name = " + Colchetes(para),
            "alter database " + Colchetes(para) + " set multi_user"};
}

/// The backup shows the database at the end of its reading.
TArquivoFeito TBackupSqlServer::FazBackup(const std::filesystem::path& arquivo, const std::function<void()>& comecou,
                                          const TAcompanha& acompanha) {
    acompanha({"Fazendo o backup no servidor", -1});
    const auto mestre = Abre(std::string(kMestre));
    SeHaBackups([&] { mestre->ExecuteDirect(BackupTSql(BancoEmUso(), TextoDoCaminho(arquivo))); });
    comecou();
    acompanha({"Conferindo o backup no servidor", -1});
    mestre->ExecuteDirect(VerificaTSql(TextoDoCaminho(arquivo)));
    return {};
}

std::vector<std::pair<std::string, std::string>> TBackupSqlServer::Lugares(TConnection& mestre,
                                                                           const std::string& arquivo,
                                                                           const std::string& banco) {
    TWKDQuery daqui(conexao_, "select top 1 physical_name as LUGAR from sys.database_files");
    daqui.Open();
    const std::string pasta = PastaDoServidor(daqui.Texto("LUGAR"));
    std::vector<std::pair<std::string, std::string>> lugares;
    TWKDQuery q(mestre, ListaDoBackupTSql(arquivo));
    for (q.Open(); !q.Eof(); q.Next()) {
        const std::string fim = q.Texto("Type") == "L" ? ".ldf" : ".mdf";
        lugares.emplace_back(q.Texto("LogicalName"), pasta + banco + "_" + std::to_string(lugares.size()) + fim);
    }
    return lugares;
}

void TBackupSqlServer::Restaura(const std::filesystem::path& arquivo, const std::string& banco,
                                const TAcompanha& acompanha) {
    ExigeNovo(banco);
    acompanha({"Restaurando " + banco + " no servidor", -1});
    const auto mestre = Abre(std::string(kMestre));
    const std::string nome = TextoDoCaminho(arquivo);
    try {
        mestre->ExecuteDirect(RestauraTSql(banco, nome, Lugares(*mestre, nome, banco)));
    } catch (const TErroBanco&) {
        DescartaPedaco(*mestre, banco);
        throw;
    }
}

/// A restore that was begun leaves a database that nobody can open.
void TBackupSqlServer::DescartaPedaco(TConnection& mestre, const std::string& banco) noexcept {
    try {
        if (ContaRegistros(mestre, PedacosTSql(banco)) > 0) mestre.ExecuteDirect(ApagaTSql(banco));
    } catch (const std::exception&) {  // named by the next start
    }
}

void TBackupSqlServer::CriaVazio(const std::string& banco, const std::string&, int) {
    ExigeNovo(banco);
    Abre(std::string(kMestre))->ExecuteDirect(CriaTSql(banco));
}

bool TBackupSqlServer::Existe(const std::string& banco) {
    const auto mestre = Abre(std::string(kMestre));
    return ContaRegistros(*mestre, "select count(*) as total from sys.databases where name = " + Literal(banco)) > 0;
}

void TBackupSqlServer::Apaga(const std::string& banco) { Abre(std::string(kMestre))->ExecuteDirect(ApagaTSql(banco)); }

std::unique_ptr<TConnection> TBackupSqlServer::Abre(const std::string& banco) {
    auto outra = conexao_.Outra(conexao_.ParametrosDe(banco));
    outra->Open();
    return outra;
}

/// One that somebody entered meanwhile keeps its name, and is open to all again.
void TBackupSqlServer::Renomeia(const std::string& de, const std::string& para) {
    const auto mestre = Abre(std::string(kMestre));
    const auto comandos = RenomeiaTSql(de, para);
    mestre->ExecuteDirect(comandos.at(0));
    try {
        mestre->ExecuteDirect(comandos.at(1));
    } catch (const TErroBanco&) {
        mestre->ExecuteDirect("alter database " + Colchetes(de) + " set multi_user");
        throw;
    }
    mestre->ExecuteDirect(comandos.at(2));
}

void TBackupSqlServer::PoeNoLugar(const std::string& novo, const std::string& antigo) {
    if (!antigo.empty()) Renomeia(BancoEmUso(), antigo);
    Renomeia(novo, BancoEmUso());
}

void TBackupSqlServer::Devolve(const std::string& antigo) {
    if (!Existe(antigo)) return;
    if (Existe(BancoEmUso())) Renomeia(BancoEmUso(), NomeDaCopia("_recusado"));  // RestosDeBackup names it
    Renomeia(antigo, BancoEmUso());
}

std::vector<std::string> TBackupSqlServer::CopiasPassageiras() {
    std::vector<std::string> nomes;
    const auto mestre = Abre(std::string(kMestre));
    TWKDQuery q(*mestre, "select name as NOME from sys.databases");
    for (q.Open(); !q.Eof(); q.Next())
        for (const char* meio : {"_prova_", "_ensaio_", "_recusado"})
            if (q.Texto("NOME").starts_with(conexao_.Alias() + meio)) nomes.push_back(q.Texto("NOME"));
    return nomes;
}

std::uintmax_t TBackupSqlServer::TamanhoNoDisco(TConnection& banco) {
    return static_cast<std::uintmax_t>(
        ContaRegistros(banco, "select sum(cast(size as bigint)) * 8192 as total from sys.database_files"));
}

std::uintmax_t TBackupSqlServer::TamanhoDoBanco() {
    return SeHaBackups(
        [&] { return static_cast<std::uintmax_t>(ContaRegistros(conexao_, std::string(kTamanhoTSql))); });
}

/// Of a drive that the folder names; a server that does not tell, or a share, leaves it to the backup.
std::optional<std::uintmax_t> TBackupSqlServer::EspacoPara(const std::filesystem::path& pasta) {
    const std::string unidade = TextoDoCaminho(pasta).substr(0, 2);
    if (!unidade.ends_with(':')) return std::nullopt;
    try {
        TWKDQuery q(conexao_, EspacoTSql(unidade));
        q.Open();
        return q.Eof() ? std::nullopt : std::optional(static_cast<std::uintmax_t>(q.Inteiro("LIVRES")));
    } catch (const TErroBanco& erro) {
        if (erro.ConexaoPerdida()) throw;
        return std::nullopt;
    }
}

}  // namespace wkd
