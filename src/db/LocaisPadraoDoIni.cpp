#include "LocalizaIni.h"

#ifdef _WIN32
#include <windows.h>

#include <iterator>
#endif

namespace wkd {

#ifdef _WIN32
std::filesystem::path PastaDoPrograma() {
    wchar_t arquivo[32768] = L"";
    GetModuleFileNameW(nullptr, arquivo, static_cast<DWORD>(std::size(arquivo)));
    return std::filesystem::path(arquivo).parent_path();
}

static std::filesystem::path PastaProgramFiles() {
    wchar_t pasta[MAX_PATH] = L"";
    DWORD tamanho = sizeof pasta;
    RegGetValueW(HKEY_LOCAL_MACHINE, L"Software\\Microsoft\\Windows\\CurrentVersion", L"ProgramFilesDir", RRF_RT_REG_SZ,
                 nullptr, pasta, &tamanho);
    return pasta;
}
#else
std::filesystem::path PastaDoPrograma() { return std::filesystem::read_symlink("/proc/self/exe").parent_path(); }

static std::filesystem::path PastaProgramFiles() { return "/opt"; }
#endif

TLocaisDoIni LocaisPadraoDoIni() {
    return {PastaDoPrograma(), PastaProgramFiles(), "X:\\SVN\\HBN\\exe\\win32\\WKD.Ini"};
}

}  // namespace wkd
