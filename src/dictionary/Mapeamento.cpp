#include "Mapeamento.h"

#include <system_error>

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#endif

namespace wkd {

#ifdef _WIN32

TMapeamento::TMapeamento(const std::filesystem::path& arquivo) {
    tamanho_ = static_cast<std::size_t>(std::filesystem::file_size(arquivo));
    if (tamanho_ == 0) return;
    const HANDLE aberto = CreateFileW(arquivo.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING, 0, nullptr);
    const HANDLE mapa = CreateFileMappingW(aberto, nullptr, PAGE_READONLY, 0, 0, nullptr);
    if (mapa) inicio_ = MapViewOfFile(mapa, FILE_MAP_READ, 0, 0, tamanho_);
    const auto erro = static_cast<int>(GetLastError());
    if (mapa) CloseHandle(mapa);
    if (aberto != INVALID_HANDLE_VALUE) CloseHandle(aberto);
    if (!inicio_) throw std::system_error(erro, std::system_category());
}

TMapeamento::~TMapeamento() {
    if (inicio_) UnmapViewOfFile(inicio_);
}

#else

namespace {

/// Error number of the attempt, 0 when it succeeded.
int Mapeia(int aberto, void*& inicio, std::size_t& tamanho) {
    struct stat estado {};
    if (fstat(aberto, &estado) != 0) return errno;
    if (S_ISDIR(estado.st_mode)) return EISDIR;
    if (!S_ISREG(estado.st_mode)) return EINVAL;
    tamanho = static_cast<std::size_t>(estado.st_size);
    if (tamanho == 0) return 0;
    void* mapa = mmap(nullptr, tamanho, PROT_READ, MAP_PRIVATE, aberto, 0);
    if (mapa == MAP_FAILED) return errno;
    inicio = mapa;
    return 0;
}

}  // namespace

TMapeamento::TMapeamento(const std::filesystem::path& arquivo) {
    const int aberto = open(arquivo.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (aberto < 0) throw std::system_error(errno, std::generic_category());
    const int erro = Mapeia(aberto, inicio_, tamanho_);
    close(aberto);
    if (erro != 0) throw std::system_error(erro, std::generic_category());
}

TMapeamento::~TMapeamento() {
    if (inicio_) munmap(inicio_, tamanho_);
}

#endif

}  // namespace wkd
