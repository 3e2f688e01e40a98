#include <dlfcn.h>

#include <string_view>

/// In the place of the system's: Firebird's client library is not to be found.
extern "C" void* dlopen(const char* nome, int modo) noexcept {
    const auto verdadeira = reinterpret_cast<void* (*)(const char*, int)>(dlsym(RTLD_NEXT, "dlopen"));
    const bool firebird = nome != nullptr && std::string_view(nome).find("fbclient") != std::string_view::npos;
    return verdadeira(firebird ? "/nao/existe/libfbclient.so.2" : nome, modo);
}
