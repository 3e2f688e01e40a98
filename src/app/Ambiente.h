#pragma once

#include <filesystem>

#include "Aliases.h"

namespace wkd {

/// Places of this machine that the program uses. Every one a value, so that a test points it elsewhere.
struct TAmbiente {
    std::filesystem::path pastaPrograma;   // log, rejects file, settings file
    std::filesystem::path temporaria;      // below it the working directory
    std::filesystem::path marcaNaoCria;    // marker file
    TLocaisDoIni locais;                   // settings file
    std::filesystem::path corrente = ".";  // "erroCria.sql", marker files of the tables
};

TAmbiente AmbientePadrao();

}  // namespace wkd
