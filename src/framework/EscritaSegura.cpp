#include "EscritaSegura.h"

#include <cerrno>
#include <cstdio>
#include <memory>
#include <string>
#include <system_error>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace wkd {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void Falha(const fs::path& caminho) {
    throw std::system_error(errno, std::generic_category(), caminho.string());
}

struct TFecha {
    void operator()(std::FILE* arquivo) const { std::fclose(arquivo); }
};
using TArquivo = std::unique_ptr<std::FILE, TFecha>;

#ifdef _WIN32
TArquivo CriaTemporario(fs::path& caminho) {
    caminho += L".novo";
    return TArquivo(_wfopen(caminho.c_str(), L"wb"));
}
bool NoDisco(std::FILE* arquivo) { return _commit(_fileno(arquivo)) == 0; }
std::FILE* AbreEscrito(const fs::path& caminho) { return _wfopen(caminho.c_str(), L"r+b"); }
bool CopiaPermissoes(const fs::path&, std::FILE*) { return true; }
void PastaNoDisco(const fs::path&) {}
#else
/// Mode 0600 from the start: the content holds passwords.
TArquivo CriaTemporario(fs::path& caminho) {
    std::string nome = caminho.string() + ".XXXXXX";
    const int descritor = mkstemp(nome.data());
    caminho = nome;
    TArquivo arquivo(descritor < 0 ? nullptr : fdopen(descritor, "wb"));
    if (descritor >= 0 && !arquivo) {
        close(descritor);
        unlink(nome.c_str());
    }
    return arquivo;
}

bool NoDisco(std::FILE* arquivo) { return fsync(fileno(arquivo)) == 0; }
std::FILE* AbreEscrito(const fs::path& caminho) { return std::fopen(caminho.c_str(), "rb"); }

/// False when the mode of a file that is there could not be given to the other.
bool CopiaPermissoes(const fs::path& de, std::FILE* para) {
    struct stat estado {};
    if (stat(de.c_str(), &estado) != 0) return true;
    // Only root may give a file away; without the owner the mode alone is kept.
    const bool dono = fchown(fileno(para), estado.st_uid, estado.st_gid) == 0;
    return fchmod(fileno(para), estado.st_mode & (dono ? 07777 : 0777)) == 0;
}

/// Makes the rename itself survive a power cut.
void PastaNoDisco(const fs::path& pasta) {
    const int descritor = open(pasta.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descritor < 0) return;
    fsync(descritor);
    close(descritor);
}
#endif

void Escreve(const fs::path& destino, const fs::path& temporario, TArquivo arquivo, std::string_view bytes) {
    if (!CopiaPermissoes(destino, arquivo.get())) Falha(destino);
    const bool escrito = std::fwrite(bytes.data(), 1, bytes.size(), arquivo.get()) == bytes.size() &&
                         std::fflush(arquivo.get()) == 0 && NoDisco(arquivo.get());
    if (!escrito) Falha(temporario);
}

/// Runs `escreve`, which makes the new file, and renames it over the old one; a failure takes the new file away.
template <class TEscreve>
void Substitui(const fs::path& novo, const fs::path& destino, TEscreve escreve) {
    try {
        escreve();
        fs::rename(novo, destino);
    } catch (...) {
        std::error_code ignorado;
        fs::remove(novo, ignorado);
        throw;
    }
    PastaNoDisco(destino.parent_path());
}

fs::path SemLinks(const fs::path& caminho) { return fs::weakly_canonical(fs::absolute(caminho)); }

}  // namespace

void SubstituiArquivo(const fs::path& caminho, std::string_view bytes) {
    const fs::path destino = SemLinks(caminho);
    fs::path temporario = destino;
    TArquivo arquivo = CriaTemporario(temporario);
    if (!arquivo) Falha(temporario);
    Substitui(temporario, destino, [&] { Escreve(destino, temporario, std::move(arquivo), bytes); });
}

void SubstituiPor(const fs::path& novo, const fs::path& caminho) {
    const fs::path destino = SemLinks(caminho);
    Substitui(novo, destino, [&] {
        const TArquivo arquivo(AbreEscrito(novo));
        if (!arquivo) Falha(novo);
        CopiaPermissoes(destino, arquivo.get());  // a file system without them refuses no copy
        if (!NoDisco(arquivo.get())) Falha(novo);
    });
}

void LevaAoDisco(const fs::path& caminho) {
    const TArquivo arquivo(AbreEscrito(caminho));
    if (!arquivo || !NoDisco(arquivo.get())) Falha(caminho);
    PastaNoDisco(fs::absolute(caminho).parent_path());
}

}  // namespace wkd
