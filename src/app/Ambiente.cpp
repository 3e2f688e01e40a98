#include "Ambiente.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace wkd {

std::filesystem::path PastaDoPrograma() {
#ifdef _WIN32
    wchar_t nome[32768];
    const DWORD tamanho = GetModuleFileNameW(nullptr, nome, static_cast<DWORD>(std::size(nome)));
    return std::filesystem::path(std::wstring(nome, tamanho)).parent_path();
#else
    return std::filesystem::read_symlink("/proc/self/exe").parent_path();
#endif
}

TAmbiente AmbientePadrao() {
#ifdef _WIN32
    const std::filesystem::path marca = "c:\\naocria.wkd";
#else
    const std::filesystem::path marca = "/naocria.wkd";
#endif
    TLocaisDoIni locais = LocaisPadraoDoIni();
    locais.pastaPrograma = PastaDoPrograma();
    return {locais.pastaPrograma, std::filesystem::temp_directory_path(), marca, locais};
}

}  // namespace wkd
