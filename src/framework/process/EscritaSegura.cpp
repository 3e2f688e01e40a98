#include "process/EscritaSegura.h"

#include <cerrno>
#include <cstdio>
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

[[noreturn]] void Falha(const fs::path& caminho, int erro = errno) {
    throw std::system_error(erro, std::generic_category(), caminho.string());
}

#ifdef _WIN32
TArquivo CriaTemporario(fs::path& caminho) {
    caminho += L".novo";
    return CriaArquivo(caminho);
}
bool NoDisco(std::FILE* arquivo) { return _commit(_fileno(arquivo)) == 0; }
TArquivo AbreEscrito(const fs::path& caminho) { return TArquivo(_wfopen(caminho.c_str(), L"r+b")); }
bool CopiaPermissoes(const fs::path&, std::FILE*) { return true; }
void PastaNoDisco(const fs::path&) {}
bool LinkDeConfianca(const fs::path&) { return true; }  // making one takes an administrator

TArquivo Abre(const fs::path& caminho, const wchar_t* modo, bool porLink) {
    if (!porLink && fs::is_symlink(caminho)) Falha(caminho, ELOOP);
    TArquivo arquivo(_wfopen(caminho.c_str(), modo));
    if (!arquivo) Falha(caminho);
    return arquivo;
}
#else
/// The descriptor as a stream; anything but an ordinary file is refused. A second name of a file may be one that
/// somebody else gave it, to have it written to.
TArquivo Comum(const fs::path& caminho, int descritor, const char* modo, nlink_t nomes) {
    if (descritor < 0) Falha(caminho);
    struct stat estado {};
    int erro = fstat(descritor, &estado) != 0 ? errno : 0;
    if (erro == 0 && (!S_ISREG(estado.st_mode) || estado.st_nlink > nomes)) erro = EINVAL;
    TArquivo arquivo(erro == 0 ? fdopen(descritor, modo) : nullptr);
    if (arquivo) return arquivo;
    if (erro == 0) erro = errno;
    close(descritor);
    Falha(caminho, erro);
}

constexpr int kSempre = O_CLOEXEC | O_NONBLOCK;  // a pipe without a reader is not waited for
constexpr auto kQuantosForem = static_cast<nlink_t>(-1);

bool LinkDeConfianca(const fs::path& caminho) {
    struct stat estado {};
    return lstat(caminho.c_str(), &estado) != 0 || !S_ISLNK(estado.st_mode) || estado.st_uid == 0 ||
           estado.st_uid == geteuid();
}

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
TArquivo AbreEscrito(const fs::path& caminho) { return AbreParaLer(caminho); }

/// False when the mode of a file that is there could not be given to the other.
bool CopiaPermissoes(const fs::path& de, std::FILE* para) {
    struct stat estado {};
    if (lstat(de.c_str(), &estado) != 0 || !S_ISREG(estado.st_mode)) return true;
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

}  // namespace

#ifdef _WIN32
TArquivo AbreParaLer(const fs::path& caminho, bool porLink) { return Abre(caminho, L"rb", porLink); }
TArquivo AbreParaAcrescentar(const fs::path& caminho) { return Abre(caminho, L"a+b", false); }
#else
TArquivo AbreParaLer(const fs::path& caminho, bool porLink) {
    const int descritor = open(caminho.c_str(), O_RDONLY | kSempre | (porLink ? 0 : O_NOFOLLOW));
    return Comum(caminho, descritor, "rb", kQuantosForem);
}

TArquivo AbreParaAcrescentar(const fs::path& caminho) {
    const int descritor = open(caminho.c_str(), O_RDWR | O_APPEND | O_CREAT | O_NOFOLLOW | kSempre, 0600);
    TArquivo arquivo = Comum(caminho, descritor, "a+b", 1);
    fchmod(descritor, 0600);  // somebody else's stays as it is
    return arquivo;
}
#endif

std::string LeArquivoInteiro(const fs::path& caminho, bool porLink) {
    const TArquivo arquivo = AbreParaLer(caminho, porLink);
    std::string bytes;
    char bloco[1 << 16];
    while (const auto lidos = std::fread(bloco, 1, sizeof bloco, arquivo.get())) bytes.append(bloco, lidos);
    if (std::ferror(arquivo.get())) Falha(caminho);
    return bytes;
}

TArquivo CriaArquivo(const fs::path& caminho) {
    if (fs::symlink_status(caminho).type() != fs::file_type::directory) fs::remove(caminho);
    TArquivo arquivo = CriaSeNaoHa(caminho);
    if (!arquivo) Falha(caminho, EEXIST);
    return arquivo;
}

TArquivo CriaSeNaoHa(const fs::path& caminho) {
#ifdef _WIN32
    TArquivo arquivo(_wfopen(caminho.c_str(), L"wbx"));
#else
    TArquivo arquivo(std::fopen(caminho.c_str(), "wbxe"));
#endif
    if (!arquivo && errno != EEXIST) Falha(caminho);
    return arquivo;
}

TSaidaEmArquivo::TSaidaEmArquivo(TArquivo arquivo) : std::ostream(nullptr), buffer_(std::move(arquivo)) {
    rdbuf(&buffer_);
}

TSaidaEmArquivo::TBuffer::TBuffer(TArquivo arquivo) : arquivo_(std::move(arquivo)) {
    std::setvbuf(arquivo_.get(), nullptr, _IONBF, 0);
    setp(bytes_.data(), bytes_.data() + bytes_.size());
}

TSaidaEmArquivo::TBuffer::int_type TSaidaEmArquivo::TBuffer::overflow(int_type caractere) {
    if (sync() != 0) return traits_type::eof();
    if (!traits_type::eq_int_type(caractere, traits_type::eof())) sputc(traits_type::to_char_type(caractere));
    return traits_type::not_eof(caractere);
}

int TSaidaEmArquivo::TBuffer::sync() {
    const auto bytes = static_cast<std::size_t>(pptr() - pbase());
    setp(bytes_.data(), bytes_.data() + bytes_.size());
    return std::fwrite(bytes_.data(), 1, bytes, arquivo_.get()) == bytes ? 0 : -1;
}

fs::path SemLinks(const fs::path& caminho) {
    if (!LinkDeConfianca(caminho)) Falha(caminho, ELOOP);
    return fs::weakly_canonical(fs::absolute(caminho));
}

void SubstituiArquivo(const fs::path& caminho, std::string_view bytes) {
    const fs::path destino = fs::absolute(caminho);
    fs::path temporario = destino;
    TArquivo arquivo = CriaTemporario(temporario);
    if (!arquivo) Falha(temporario);
    Substitui(temporario, destino, [&] { Escreve(destino, temporario, std::move(arquivo), bytes); });
}

void SubstituiPor(const fs::path& novo, const fs::path& caminho) {
    const fs::path destino = SemLinks(caminho);
    Substitui(novo, destino, [&] {
        const TArquivo arquivo = AbreEscrito(novo);
        if (!arquivo) Falha(novo);
        CopiaPermissoes(destino, arquivo.get());  // a file system without them refuses no copy
        if (!NoDisco(arquivo.get())) Falha(novo);
    });
}

void LevaAoDisco(const fs::path& caminho) {
    const TArquivo arquivo = AbreEscrito(caminho);
    if (!arquivo || !NoDisco(arquivo.get())) Falha(caminho);
    PastaNoDisco(fs::absolute(caminho).parent_path());
}

}  // namespace wkd
