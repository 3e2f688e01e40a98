#include "PastaPrivada.h"

#ifndef _WIN32
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace wkd {

namespace fs = std::filesystem;

std::string DefeitoDaPasta(const fs::path& pasta) {
    std::error_code erro;
    const auto estado = fs::symlink_status(pasta, erro);
    if (estado.type() == fs::file_type::not_found) return {};
    if (estado.type() == fs::file_type::symlink) return "é um link";
    if (estado.type() != fs::file_type::directory) return "não é uma pasta";
#ifndef _WIN32
    struct stat dono {};
    if (lstat(pasta.c_str(), &dono) != 0 || dono.st_uid != geteuid()) return "pertence a outro usuário";
#endif
    return {};
}

bool CriaPastaPrivada(const fs::path& pasta) {
#ifdef _WIN32
    std::error_code erro;
    return fs::create_directory(pasta, erro);  // below the user's own temporary directory, which is private already
#else
    return mkdir(pasta.c_str(), 0700) == 0;
#endif
}

}  // namespace wkd
