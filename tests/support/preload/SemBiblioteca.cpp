#include <dlfcn.h>

#include <cstdlib>
#include <string_view>

/// In the place of the system's: the library that WKD_FALTA names is not to be found.
extern "C" void* dlopen(const char* nome, int modo) noexcept {
    const auto verdadeira = reinterpret_cast<void* (*)(const char*, int)>(dlsym(RTLD_NEXT, "dlopen"));
    const char* falta = std::getenv("WKD_FALTA");
    const bool esconde = nome && falta && std::string_view(nome).find(falta) != std::string_view::npos;
    return verdadeira(esconde ? "/nao/existe" : nome, modo);
}
