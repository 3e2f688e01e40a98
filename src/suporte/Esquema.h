#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Mascara.h"
#include "connection/Connection.h"

namespace wkd {

/// Tables, columns, keys and indexes, the statements that make them again, and the names of whatever else there is, as
/// one JSON object. The mask learns their names. Throws TErroBanco.
std::string EsquemaEmJson(TConnection& conexao, TMascara& mascara);

/// What of it makes an empty database.
struct TEsquema {
    std::string tipoBanco, conjunto;  // kind of server, and character set of new texts; empty: the server's own
    int pagina = 0;                   // bytes; 0: the server's own
    std::vector<std::string> comandos;
};
/// Throws TErroPacote.
TEsquema LeEsquema(const std::filesystem::path& arquivo);

}  // namespace wkd
