#pragma once

#include "Prova.h"

namespace wkd {

struct TPedidoDeRestauracao {
    std::string alias;
    std::filesystem::path arquivo;
    std::filesystem::path pasta;  // of backups: that of the database in use goes there where it is needed
};

struct TRestauracao {
    TVeredito veredito;
    std::string antigo;  // where the database is that was in use; empty: there was none
};

/// Puts a backup in the place of the alias's database, which need not open any more. The restored one comes up under
/// another name, and takes the place only after it was opened and compared; that in use keeps existing as
/// "<alias>_antes". A Firebird server, which cannot rename, gets a proven copy of the one in use under that name before
/// the place is made free, and nobody writes into its tables meanwhile. Any failure leaves the old one in place.
/// Refused while anybody is connected. The connection is closed afterwards. Throws TErroDeBackup, TErroBanco,
/// std::system_error.
TRestauracao RestauraNaOriginal(THBNConnection& conexao, const TPedidoDeRestauracao& pedido,
                                const TAcompanha& acompanha);

/// Why nothing may be done with a database that lets in but one: where the whole one is, and the next step to take.
std::string LugarFechado(THBNConnection& conexao);

/// What interrupted work of this program has left beside the alias's database, and where the database is when it is not
/// in its place: lines with the next step to take. The connection need not be open.
std::vector<std::string> RestosDeBackup(THBNConnection& conexao);

}  // namespace wkd
