#include "ServidorDeBackup.h"

#include "BackupFirebird.h"
#include "BackupSqlServer.h"

namespace wkd {

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
