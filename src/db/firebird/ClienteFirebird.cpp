#include "firebird/ClienteFirebird.h"

#include <vector>

#include "firebird/ConexaoFirebird.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace wkd {
namespace {

namespace fs = std::filesystem;

#ifdef _WIN32
constexpr const char* kComoInstalar =
    "O cliente do Firebird (fbclient.dll de 64 bits) não foi encontrado. Instale o Firebird para Windows de 64 bits, "
    "ao menos a parte do cliente, ou ponha a fbclient.dll na pasta do programa, e tente de novo.";

using TBiblioteca = HMODULE;

std::wstring PastaDaInstancia() {
    wchar_t texto[1024];
    DWORD bytes = sizeof texto;
    const auto lido = RegGetValueW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Firebird Project\\Firebird Server\\Instances",
                                   L"DefaultInstance", RRF_RT_REG_SZ, nullptr, texto, &bytes);
    return lido == ERROR_SUCCESS ? texto : L"";
}

/// Beside the program, in the installation's folder, by the path. Firebird 2.5 has it under "bin".
std::vector<fs::path> Lugares() {
    constexpr const wchar_t* kNome = L"fbclient.dll";
    wchar_t programa[32768];
    GetModuleFileNameW(nullptr, programa, static_cast<DWORD>(std::size(programa)));
    std::vector<fs::path> lugares{fs::path(programa).parent_path() / kNome};
    if (const fs::path pasta = PastaDaInstancia(); !pasta.empty())
        lugares.insert(lugares.end(), {pasta / kNome, pasta / "bin" / kNome});
    lugares.emplace_back(kNome);
    return lugares;
}

/// What stands beside the library is found, what stands in the current folder is not.
TBiblioteca Abre(const fs::path& lugar) {
    SetDllDirectoryW(L"");
    return LoadLibraryExW(lugar.c_str(), nullptr, lugar.is_absolute() ? LOAD_WITH_ALTERED_SEARCH_PATH : 0);
}
std::string Motivo() {
    switch (const DWORD erro = GetLastError()) {
        case ERROR_MOD_NOT_FOUND:
        case ERROR_FILE_NOT_FOUND:
            return "não está lá";
        case ERROR_BAD_EXE_FORMAT:
            return "não é de 64 bits";
        default:
            return "erro " + std::to_string(erro) + " do Windows";
    }
}
void* Funcao(TBiblioteca biblioteca, const char* nome) {
    return reinterpret_cast<void*>(GetProcAddress(biblioteca, nome));
}
void Larga(TBiblioteca biblioteca) { FreeLibrary(biblioteca); }
#else
constexpr const char* kComoInstalar =
    "O cliente do Firebird (libfbclient.so.2) não foi encontrado. Instale o pacote libfbclient2 e tente de novo.";

using TBiblioteca = void*;

std::vector<fs::path> Lugares() { return {"libfbclient.so.2"}; }
TBiblioteca Abre(const fs::path& lugar) { return dlopen(lugar.c_str(), RTLD_NOW | RTLD_LOCAL); }
std::string Motivo() { return dlerror(); }
void* Funcao(TBiblioteca biblioteca, const char* nome) { return dlsym(biblioteca, nome); }
void Larga(TBiblioteca biblioteca) { dlclose(biblioteca); }
#endif

/// Name of a function that the library lacks; empty when all are there.
std::string Liga(TClienteFirebird& cliente, TBiblioteca biblioteca) {
#define WKD_LIGA(nome)                                                                  \
    cliente.nome = reinterpret_cast<decltype(cliente.nome)>(Funcao(biblioteca, #nome)); \
    if (cliente.nome == nullptr) return #nome;
    WKD_FUNCOES_DO_FIREBIRD(WKD_LIGA)
#undef WKD_LIGA
    return {};
}

}  // namespace

TClienteFirebird CarregaClienteFirebird(std::span<const fs::path> lugares) {
    std::string motivos;
    for (const fs::path& lugar : lugares) {
        motivos += "\n" + lugar.string() + ": ";
        const TBiblioteca biblioteca = Abre(lugar);
        if (biblioteca == nullptr) {
            motivos += Motivo();
            continue;
        }
        TClienteFirebird cliente;
        const std::string falta = Liga(cliente, biblioteca);
        if (falta.empty()) return cliente;
        motivos += "não tem a função " + falta;
        Larga(biblioteca);
    }
    throw TErroConfiguracao(kComoInstalar + motivos, TFalha::SemDriver);
}

const TClienteFirebird& Cliente() {
    static const TClienteFirebird cliente = CarregaClienteFirebird(Lugares());
    return cliente;
}

std::string VersaoDoClienteFirebird() {
    try {
        char texto[256] = {};
        Cliente().isc_get_client_version(texto);
        return texto;
    } catch (const TErroConfiguracao&) {
        return {};
    }
}

}  // namespace wkd
