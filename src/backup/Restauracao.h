#pragma once

#include <filesystem>
#include <string>

#include "aliases/Aliases.h"
#include "values/Valor.h"

namespace wkd {

/// Where the database of an alias lives, as its settings say.
struct TLocalDoBanco {
    std::string caminho;   // "CAMINHO" or "Path", with its trailing separator
    std::string banco;     // "BANCO" or "DataBase"
    std::string servidor;  // "LOCAL" or "Hostname"
};
TLocalDoBanco LeLocalDoBanco(const TAliases& aliases, const std::string& alias);

/// Where a backup is restored to.
struct TDestinoDaRestauracao {
    std::string servidor, banco;
};
/// The database in use, or a test copy "<alias>_res.fdb" beside it.
TDestinoDaRestauracao DestinoDaRestauracao(const TAliases& aliases, const std::string& alias, bool naBaseOriginal);

/// "Backup/Relatorios_<dd_mm-hh_mm>.zip" in the program's folder.
std::filesystem::path ArquivoPadraoDosRelatorios(const std::filesystem::path& pastaPrograma, TDataHora quando);
/// File name proposed when the person chooses one: "Relatorios_<ddmmyy>.zip".
std::string NomePropostoDosRelatorios(TDataHora quando);

}  // namespace wkd
