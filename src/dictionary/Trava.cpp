#include "Trava.h"

#include <string>

#include "Caminho.h"
#include "Pacote.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#endif

namespace wkd {

namespace {

[[noreturn]] void OutraExecucao(const std::filesystem::path& arquivo) {
    throw TErroPacote("Outra atualização está em andamento (trava '" + TextoDoCaminho(arquivo) +
                      "'). Espere que ela termine.");
}

[[noreturn]] void TravaInutil(const std::filesystem::path& arquivo, const std::string& causa) {
    throw TErroPacote("A trava '" + TextoDoCaminho(arquivo) + "' não pode ser usada: " + causa + ".");
}

}  // namespace

#ifdef _WIN32

TTrava::TTrava(std::filesystem::path arquivo) : arquivo_(std::move(arquivo)) {
    aberta_ = CreateFileW(arquivo_.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                          FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (aberta_ != INVALID_HANDLE_VALUE) return;
    if (GetLastError() == ERROR_SHARING_VIOLATION) OutraExecucao(arquivo_);
    TravaInutil(arquivo_, "erro " + std::to_string(GetLastError()) + " do sistema");
}

TTrava::~TTrava() { CloseHandle(aberta_); }

#else

namespace {

int Abre(const std::filesystem::path& arquivo) {
    const int aberta = open(arquivo.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0600);
    if (aberta >= 0) return aberta;
    const int erro = errno;
    if (erro == ELOOP) TravaInutil(arquivo, "o nome é de um link; apague-o");
    if (erro == EACCES || erro == EPERM)
        TravaInutil(arquivo, "sem permissão, pode pertencer a outro usuário; apague-o");
    TravaInutil(arquivo, std::generic_category().message(erro));
}

/// Why the open file is no lock of the current user; empty when it is one.
std::string Defeito(const struct stat& estado) {
    if (!S_ISREG(estado.st_mode)) return "o nome não é de um arquivo comum; apague-o";
    if (estado.st_uid != geteuid()) return "pertence a outro usuário; apague-o";
    return {};
}

/// Whether the name still leads to the open file: its last owner may have removed it in between.
bool AindaNoLugar(const std::filesystem::path& arquivo, const struct stat& aberto) {
    struct stat atual {};
    return lstat(arquivo.c_str(), &atual) == 0 && atual.st_ino == aberto.st_ino && atual.st_dev == aberto.st_dev;
}

/// The locked file; -1 when it was removed before the lock was had.
int Trava(const std::filesystem::path& arquivo) {
    const int aberta = Abre(arquivo);
    struct stat estado {};
    std::string defeito = fstat(aberta, &estado) != 0 ? std::generic_category().message(errno) : Defeito(estado);
    if (defeito.empty() && flock(aberta, LOCK_EX | LOCK_NB) == 0) {
        if (AindaNoLugar(arquivo, estado)) return aberta;
        close(aberta);
        return -1;
    }
    const int erro = errno;
    close(aberta);
    if (!defeito.empty()) TravaInutil(arquivo, defeito);
    if (erro == EWOULDBLOCK) OutraExecucao(arquivo);
    TravaInutil(arquivo, std::generic_category().message(erro));
}

}  // namespace

TTrava::TTrava(std::filesystem::path arquivo) : arquivo_(std::move(arquivo)) {
    constexpr int kTentativas = 100;
    for (int i = 0; i < kTentativas && aberta_ < 0; ++i) aberta_ = Trava(arquivo_);
    if (aberta_ < 0) OutraExecucao(arquivo_);
}

TTrava::~TTrava() {
    unlink(arquivo_.c_str());  // while the lock is held: whoever waits finds another file there and tries again
    close(aberta_);
}

#endif

}  // namespace wkd
