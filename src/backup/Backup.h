#pragma once

#include "Manifesto.h"
#include "ServidorDeBackup.h"

namespace wkd {

struct TPedidoDeBackup {
    std::string alias;
    std::filesystem::path pasta;  // must exist; of a server that keeps the files itself, empty: its own for backups
    int guarda = 0;               // backups of the alias to keep, this one included; 0, or on a server: all
};

struct TBackupFeito {
    std::filesystem::path arquivo;
    TManifesto manifesto;
    std::vector<std::filesystem::path> apagados;     // older ones
    std::vector<std::filesystem::path> naoApagados;  // older ones that could not be
    std::vector<std::filesystem::path> restos;       // of backups that were interrupted, left where they are
};

/// Backs the database of the alias up, and reads it in a snapshot begun before, so that a proof knows what has to come
/// back. The file has its name once it is whole and its manifest stands beside it; whatever ends it before leaves
/// nothing behind, and a kill a file that ends in ".parcial". Throws TErroDeBackup, TErroBanco, std::system_error.
TBackupFeito FazBackup(THBNConnection& conexao, const TPedidoDeBackup& pedido, const TAcompanha& acompanha);

/// Backups of an alias in a folder, oldest first.
std::vector<std::filesystem::path> BackupsDoAlias(const std::filesystem::path& pasta, const std::string& alias,
                                                  const std::string& extensao);

/// "yyyy-mm-ddThh:mm:ss".
std::string Instante(TDataHora quando);

}  // namespace wkd
