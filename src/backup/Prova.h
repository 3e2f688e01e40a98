#pragma once

#include "Manifesto.h"
#include "ServidorDeBackup.h"

namespace wkd {

/// Compares a restored database with what its backup was taken of; without manifest, looks whether it opens and has the
/// dictionary. What others changed while the backup began is named and does not fail. Throws TErroBanco.
TVeredito ConfereCopia(IServidorDeBackup& servidor, const std::string& banco,
                       const std::optional<TManifesto>& manifesto, const TAcompanha& acompanha);

/// What speaks against a file before it is restored: changed or cut since it was made, or of another database. Nothing
/// is said of a file on a server. Throws TErroDeBackup; `alias` empty: any.
void ExigeArquivo(const std::filesystem::path& arquivo, const std::optional<TManifesto>& manifesto,
                  const std::string& alias, const TAcompanha& acompanha);

/// Before a restore: what certainly does not fit is not begun. Throws TErroDeBackup.
void ExigeEspacoParaCopia(IServidorDeBackup& servidor, const std::filesystem::path& arquivo,
                          const std::optional<TManifesto>& manifesto);

struct TPedidoDeProva {
    std::filesystem::path arquivo;
    std::string banco;  // to restore into, which stays whatever the verdict; empty: a temporary one
    std::optional<TManifesto> manifesto = {};  // of a backup that was just made, whose file may be out of reach
};

/// Restores a backup into a database of its own and compares it. The verdict goes into the
/// manifest. Throws TErroDeBackup, TErroBanco, std::system_error when no verdict was reached.
TVeredito ProvaBackup(THBNConnection& conexao, const TPedidoDeProva& pedido, const TAcompanha& acompanha);

}  // namespace wkd
