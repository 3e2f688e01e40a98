#pragma once

#include <memory>
#include <string>

#include "aliases/Aliases.h"
#include "connection/Connection.h"

namespace wkd {

/// Connection through the client library, embedded engine and server. Without the library Open() throws
/// TErroConfiguracao. Parameters read: "Database" ("file",
/// "host:file" or "host/port:file"), "User_Name", "Password", "CharacterSet" (UTF8 when missing, or WIN1252 when the
/// database's own default is NONE), "ConnectTimeout" (seconds until a server that does not answer is given up, 20 when
/// missing), "GarbageCollect" (False: what is read is not cleaned up by the way). A path with accents needs
/// setlocale(LC_CTYPE, "") in a UTF-8 locale before the first connection of the process.
std::unique_ptr<TConnection> CriaConexaoFirebird(const TParametrosConexao& parametros);

/// Makes an empty database file (page size in bytes, default character set from "CharacterSet", NONE without it) and
/// closes it again. "ForcedWrites=False" leaves the order of its page writes to the system.
void CriaBancoFirebird(const TParametrosConexao& parametros, int tamanhoPagina);

/// Of the client library, such as "LI-V3.0.11.33703 Firebird 3.0"; empty where there is none.
std::string VersaoDoClienteFirebird();

}  // namespace wkd
