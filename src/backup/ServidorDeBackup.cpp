#include "ServidorDeBackup.h"

#include "BackupFirebird.h"
#include "BackupSqlServer.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"

namespace wkd {

std::string TamanhoEmTexto(std::uintmax_t bytes) {
    constexpr std::uintmax_t kMega = 1024 * 1024;
    if (bytes < kMega) return ComMilhares(static_cast<std::int64_t>((bytes + 1023) / 1024)) + " KB";
    return ComMilhares(static_cast<std::int64_t>(bytes / kMega)) + " MB";
}

int Percentual(std::uintmax_t feito, std::uintmax_t total) {
    if (total == 0) return -1;
    return static_cast<int>(std::min<std::uintmax_t>(99, feito * 100 / total));
}

std::string NomeNoDisco(std::string_view alias) {
    std::string nome;
    for (const char c : Apara(alias)) {
        const bool proibida =
            static_cast<unsigned char>(c) < 0x20 || std::string_view("/\\:*?\"<>|").find(c) != std::string_view::npos;
        nome += proibida ? '_' : c;
    }
    return nome;
}

void IServidorDeBackup::ExigeNovo(const std::string& banco) {
    if (Existe(banco))
        throw TErroDeBackup(TFalha::BancoExistente,
                            "Já existe o banco " + banco + ". Apague-o, ou mude-lhe o nome, e repita.");
}

TCopiaPassageira::~TCopiaPassageira() {
    try {
        if (existe_) servidor_.Apaga(banco_);
    } catch (const std::exception&) {  // the next start names it
    }
}

std::unique_ptr<IServidorDeBackup> CriaServidorDeBackup(THBNConnection& conexao) {
    if (conexao.TipoBanco() == TTipoBanco::tbInterbase) return std::make_unique<TBackupFirebird>(conexao);
    return std::make_unique<TBackupSqlServer>(conexao);
}

}  // namespace wkd
