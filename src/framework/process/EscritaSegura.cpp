#include "process/EscritaSegura.h"

#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <windows.h>
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
[[noreturn]] void FalhaDoSistema(const fs::path& caminho) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), caminho.string());
}

/// Virus scanners, indexers and copies to another place hold a file for a moment after it was written.
template <class TTentativa>
bool Insiste(TTentativa tentativa) {
    constexpr DWORD kPausa = 50, kVezes = 60;  // 3 s
    for (DWORD vez = 0; !tentativa(); Sleep(kPausa)) {
        const DWORD erro = GetLastError();
        const bool passageiro =
            erro == ERROR_SHARING_VIOLATION || erro == ERROR_LOCK_VIOLATION || erro == ERROR_ACCESS_DENIED;
        if (!passageiro || ++vez == kVezes) return SetLastError(erro), false;
    }
    return true;
}

/// Others may read the file meanwhile, and rename it.
TArquivo Abre(const fs::path& caminho, DWORD acesso, DWORD criacao, const char* modo) {
    constexpr DWORD kComTodos = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    HANDLE aberto = INVALID_HANDLE_VALUE;
    const bool abriu = Insiste([&] {
        aberto = CreateFileW(caminho.c_str(), acesso, kComTodos, nullptr, criacao, FILE_ATTRIBUTE_NORMAL, nullptr);
        return aberto != INVALID_HANDLE_VALUE;
    });
    if (!abriu) FalhaDoSistema(caminho);
    const int flags = _O_BINARY | (modo[0] == 'a' ? _O_APPEND : 0);
    TArquivo arquivo(_fdopen(_open_osfhandle(reinterpret_cast<std::intptr_t>(aberto), flags), modo));
    if (!arquivo) Falha(caminho);
    return arquivo;
}

TArquivo CriaTemporario(fs::path& caminho) {
    caminho += L".novo";
    return CriaArquivo(caminho);
}
bool NoDisco(std::FILE* arquivo) { return _commit(_fileno(arquivo)) == 0; }
TArquivo AbreEscrito(const fs::path& caminho) {
    return Abre(caminho, GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING, "r+b");
}
bool CopiaPermissoes(const fs::path&, std::FILE*) { return true; }  // inherited from the folder
void AbreAoGrupo(const fs::path&, std::FILE*, TLeitores, unsigned) {}
bool LinkDeConfianca(const fs::path&) { return true; }  // making one takes an administrator

void PastaNoDisco(const fs::path&) {}
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

/// Whoever is not of that group cannot give the file to it, and keeps it.
void AbreAoGrupo(const fs::path& pasta, std::FILE* arquivo, TLeitores leitores, unsigned direitos) {
    struct stat daPasta {
    }, doArquivo{};
    const int descritor = fileno(arquivo);
    const mode_t sinais = leitores == TLeitores::GrupoDaPasta ? S_ISGID | S_IWGRP : S_ISGID;
    if (stat(pasta.c_str(), &daPasta) != 0 || (daPasta.st_mode & sinais) == 0) return;
    if (fchown(descritor, static_cast<uid_t>(-1), daPasta.st_gid) != 0 || fstat(descritor, &doArquivo) != 0) return;
    fchmod(descritor, (doArquivo.st_mode & 07777) | direitos);
}

/// Makes the rename itself survive a power cut.
void PastaNoDisco(const fs::path& pasta) {
    const int descritor = open(pasta.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descritor < 0) return;
    fsync(descritor);
    close(descritor);
}
#endif

constexpr unsigned kGrupoLe = 040;

void Escreve(const fs::path& destino, const fs::path& temporario, TArquivo arquivo, std::string_view bytes,
             TLeitores leitores) {
    const bool novo = !fs::exists(fs::symlink_status(destino));
    if (!CopiaPermissoes(destino, arquivo.get())) Falha(destino);
    if (leitores == TLeitores::GrupoDaPasta || (leitores == TLeitores::GrupoHerdado && novo))
        AbreAoGrupo(destino.parent_path(), arquivo.get(), leitores, kGrupoLe);
    const bool escrito = std::fwrite(bytes.data(), 1, bytes.size(), arquivo.get()) == bytes.size() &&
                         std::fflush(arquivo.get()) == 0 && NoDisco(arquivo.get());
    if (!escrito) Falha(temporario);
}

/// Runs `escreve`, which makes the new file, and renames it over the old one; a failure takes the new file away.
template <class TEscreve>
void Substitui(const fs::path& novo, const fs::path& destino, TEscreve escreve) {
    try {
        escreve();
        Renomeia(novo, destino);
    } catch (...) {
        std::error_code ignorado;
        fs::remove(novo, ignorado);
        throw;
    }
    PastaNoDisco(destino.parent_path());
}

}  // namespace

#ifdef _WIN32
/// Comes back when the rename itself is on the disk.
void Renomeia(const fs::path& de, const fs::path& para) {
    constexpr DWORD kComo = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
    if (!Insiste([&] { return MoveFileExW(de.c_str(), para.c_str(), kComo) != 0; })) FalhaDoSistema(para);
}

/// libstdc++ knows no links here.
bool EhLink(const fs::path& caminho) {
    WIN32_FIND_DATAW achado;
    const HANDLE busca = FindFirstFileW(caminho.c_str(), &achado);
    if (busca == INVALID_HANDLE_VALUE) return false;
    FindClose(busca);
    return (achado.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
           (achado.dwReserved0 == IO_REPARSE_TAG_SYMLINK || achado.dwReserved0 == IO_REPARSE_TAG_MOUNT_POINT);
}

TArquivo AbreParaLer(const fs::path& caminho, bool porLink) {
    if (!porLink && EhLink(caminho)) Falha(caminho, ELOOP);
    return Abre(caminho, GENERIC_READ, OPEN_EXISTING, "rb");
}

TArquivo AbreParaAcrescentar(const fs::path& caminho) {
    if (EhLink(caminho)) Falha(caminho, ELOOP);
    return Abre(caminho, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS, "a+b");
}

TArquivo CriaSeNaoHa(const fs::path& caminho) {
    try {
        return Abre(caminho, GENERIC_READ | GENERIC_WRITE, CREATE_NEW, "wb");
    } catch (const std::system_error& erro) {
        if (erro.code().value() == ERROR_FILE_EXISTS) return nullptr;
        throw;
    }
}
#else
void Renomeia(const fs::path& de, const fs::path& para) { fs::rename(de, para); }

bool EhLink(const fs::path& caminho) { return fs::is_symlink(fs::symlink_status(caminho)); }

TArquivo CriaSeNaoHa(const fs::path& caminho) {
    TArquivo arquivo(std::fopen(caminho.c_str(), "wbxe"));
    if (!arquivo && errno != EEXIST) Falha(caminho);
    return arquivo;
}

TArquivo AbreParaLer(const fs::path& caminho, bool porLink) {
    const int descritor = open(caminho.c_str(), O_RDONLY | kSempre | (porLink ? 0 : O_NOFOLLOW));
    return Comum(caminho, descritor, "rb", kQuantosForem);
}

TArquivo AbreParaAcrescentar(const fs::path& caminho) {
    const int descritor = open(caminho.c_str(), O_RDWR | O_APPEND | O_CREAT | O_NOFOLLOW | kSempre, 0600);
    TArquivo arquivo = Comum(caminho, descritor, "a+b", 1);
    if (fchmod(descritor, 0600) == 0)  // somebody else's stays as it is
        AbreAoGrupo(fs::absolute(caminho).parent_path(), arquivo.get(), TLeitores::GrupoHerdado, S_IRGRP | S_IWGRP);
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

void SubstituiArquivo(const fs::path& caminho, std::string_view bytes, TLeitores leitores) {
    const fs::path destino = fs::absolute(caminho);
    fs::path temporario = destino;
    TArquivo arquivo = CriaTemporario(temporario);
    if (!arquivo) Falha(temporario);
    Substitui(temporario, destino, [&] { Escreve(destino, temporario, std::move(arquivo), bytes, leitores); });
}

void CriaPastaComo(const fs::path& pasta, const fs::path& modelo) {
    fs::create_directory(pasta, modelo);
#ifndef _WIN32
    struct stat estado {};
    if (stat(modelo.c_str(), &estado) != 0) Falha(modelo);
    // Only a member of the group may give it the folder; without that the folder is its owner's.
    const bool doGrupo = chown(pasta.c_str(), static_cast<uid_t>(-1), estado.st_gid) == 0;
    if (chmod(pasta.c_str(), estado.st_mode & (doGrupo ? 07777 : 0707)) != 0) Falha(pasta);
#endif
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
