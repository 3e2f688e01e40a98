#include "PastaPrivada.h"

#include <random>

#include "Caminho.h"
#include "Pacote.h"

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

TPastaPassageira::TPastaPassageira(const fs::path& temporaria) {
    std::random_device acaso;
    for (int tentativa = 0; tentativa < 100; ++tentativa) {
        caminho_ = temporaria / ("wkd-" + std::to_string(acaso()));
        if (!fs::exists(caminho_) && CriaPastaPrivada(caminho_)) return;
    }
    throw TErroPacote("Não foi possível criar uma pasta temporária em '" + TextoDoCaminho(temporaria) +
                      "'. Verifique as permissões e o espaço em disco.");
}

TPastaPassageira::~TPastaPassageira() {
    std::error_code erro;
    fs::remove_all(caminho_, erro);
}

}  // namespace wkd
