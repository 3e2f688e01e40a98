#include "package/BibliotecaZip.h"

#include "package/Pacote.h"

#ifdef WKD_LIBZIP
#include <dlfcn.h>
#endif

namespace wkd {

namespace {

#ifdef WKD_LIBZIP
[[noreturn]] void Falta() {
    throw TErroPacote(
        "A biblioteca que abre pacotes zip não foi encontrada. Instale o pacote libzip4 e tente de novo.\n" +
            std::string(dlerror()),
        TFalha::Arquivo);
}

TBibliotecaZip Carrega() {
    void* const biblioteca = dlopen(WKD_LIBZIP, RTLD_NOW | RTLD_LOCAL);
    if (biblioteca == nullptr) Falta();
    TBibliotecaZip zip;
#define WKD_LIGA(nome)                                                         \
    zip.nome = reinterpret_cast<decltype(zip.nome)>(dlsym(biblioteca, #nome)); \
    if (zip.nome == nullptr) Falta();
    WKD_FUNCOES_DO_ZIP(WKD_LIGA)
#undef WKD_LIGA
    return zip;
}
#else  // it is linked into the program
TBibliotecaZip Carrega() {
    TBibliotecaZip zip;
#define WKD_LIGA(nome) zip.nome = &::nome;
    WKD_FUNCOES_DO_ZIP(WKD_LIGA)
#undef WKD_LIGA
    return zip;
}
#endif

}  // namespace

const TBibliotecaZip& Zip() {
    static const TBibliotecaZip zip = Carrega();
    return zip;
}

}  // namespace wkd
