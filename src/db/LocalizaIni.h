#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace wkd {

/// Folder of the program file.
std::filesystem::path PastaDoPrograma();

/// Places where the settings file is looked for.
struct TLocaisDoIni {
    std::filesystem::path pastaPrograma;
    std::filesystem::path pastaProgramFiles;  // "ProgramFilesDir"
    std::filesystem::path desenvolvimento;    // the file itself; looked for only when the path is absolute here
};
TLocaisDoIni LocaisPadraoDoIni();

/// Finds "WKD.ini" (letter case ignored): program folder, its parent, "WKD Software" and "WKD Software/HBN" below
/// the program-files folder, development path. Throws TErroConfiguracao "Nao encontrou o arquivo" + last path tried,
/// and on a second line what to do.
std::filesystem::path LocalizaIni(const TLocaisDoIni& locais);
/// Doubled separators, "\" or "/", collapsed, but for the leading two of a network path.
std::string SemBarrasDobradas(std::string_view caminho);

}  // namespace wkd
