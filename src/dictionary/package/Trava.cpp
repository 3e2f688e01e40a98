#include "package/Trava.h"

#include <random>
#include <string>
#include <vector>

#include "package/Caminho.h"
#include "package/Pacote.h"
#include "process/EscritaSegura.h"

#ifdef _WIN32
#include <aclapi.h>
#include <sddl.h>
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

namespace fs = std::filesystem;

namespace {

#ifdef _WIN32

/// Of the user whom the process works for, and of the owner that it gives to what it makes: for an administrator that
/// is the group.
std::vector<std::byte> DoProcesso(TOKEN_INFORMATION_CLASS qual) {
    HANDLE ficha = nullptr;
    DWORD tamanho = 0;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &ficha)) return {};
    GetTokenInformation(ficha, qual, nullptr, 0, &tamanho);
    std::vector<std::byte> dados(tamanho);
    if (!GetTokenInformation(ficha, qual, dados.data(), tamanho, &tamanho)) dados.clear();
    CloseHandle(ficha);
    return dados;
}

bool Nossa(const fs::path& pasta) {
    const auto usuario = DoProcesso(TokenUser), dono = DoProcesso(TokenOwner);
    PSID daPasta = nullptr;
    PSECURITY_DESCRIPTOR descritor = nullptr;
    if (usuario.empty() || dono.empty() ||
        GetNamedSecurityInfoW(pasta.c_str(), SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &daPasta, nullptr, nullptr,
                              nullptr, &descritor) != ERROR_SUCCESS)
        return false;
    const bool nossa = EqualSid(daPasta, reinterpret_cast<const TOKEN_USER*>(usuario.data())->User.Sid) ||
                       EqualSid(daPasta, reinterpret_cast<const TOKEN_OWNER*>(dono.data())->Owner);
    LocalFree(descritor);
    return nossa;
}

/// For the user, the system and the administrators, and for nobody whom the folder above lets in.
std::wstring SoParaNos() {
    const auto usuario = DoProcesso(TokenUser);
    wchar_t* nome = nullptr;
    if (usuario.empty() ||
        !ConvertSidToStringSidW(reinterpret_cast<const TOKEN_USER*>(usuario.data())->User.Sid, &nome))
        return {};
    const std::wstring regra = L"D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;FA;;;" + std::wstring(nome) + L")";
    LocalFree(nome);
    return regra;
}

bool CriaSoParaNos(const fs::path& pasta) {
    SECURITY_ATTRIBUTES atributos{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
    const std::wstring regra = SoParaNos();
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(regra.c_str(), SDDL_REVISION_1,
                                                              &atributos.lpSecurityDescriptor, nullptr))
        return false;
    const bool criada = CreateDirectoryW(pasta.c_str(), &atributos);
    LocalFree(atributos.lpSecurityDescriptor);
    return criada;
}

#else

bool Nossa(const fs::path& pasta) {
    struct stat dono {};
    return lstat(pasta.c_str(), &dono) == 0 && dono.st_uid == geteuid();
}

bool CriaSoParaNos(const fs::path& pasta) { return mkdir(pasta.c_str(), 0700) == 0; }

#endif

}  // namespace

std::string DefeitoDaPasta(const fs::path& pasta) {
    std::error_code erro;
    const auto estado = fs::symlink_status(pasta, erro);
    if (estado.type() == fs::file_type::not_found) return {};
    if (EhLink(pasta)) return "é um link";
    if (estado.type() != fs::file_type::directory) return "não é uma pasta";
    return Nossa(pasta) ? "" : "pertence a outro usuário";
}

bool CriaPastaPrivada(const fs::path& pasta) { return CriaSoParaNos(pasta); }

TPastaPassageira::TPastaPassageira(const fs::path& temporaria) {
    std::random_device acaso;
    for (int tentativa = 0; tentativa < 100; ++tentativa) {
        caminho_ = temporaria / ("wkd-" + std::to_string(acaso()));
        if (!fs::exists(caminho_) && CriaPastaPrivada(caminho_)) return;
    }
    throw TErroPacote("Não foi possível criar uma pasta temporária em '" + TextoDoCaminho(temporaria) +
                          "'. Verifique as permissões e o espaço em disco.",
                      TFalha::Arquivo);
}

TPastaPassageira::~TPastaPassageira() {
    std::error_code erro;
    fs::remove_all(caminho_, erro);
}

namespace {

constexpr std::size_t kTexto = 1024;  // bytes of it that are read

[[noreturn]] void TravaInutil(const std::filesystem::path& arquivo, const std::string& causa) {
    throw TErroPacote("A trava '" + TextoDoCaminho(arquivo) + "' não pode ser usada: " + causa + ".", TFalha::Arquivo);
}

}  // namespace

#ifdef _WIN32

namespace {

/// While it is open, others may read it and nobody may write.
HANDLE Abre(const std::filesystem::path& arquivo) {
    return CreateFileW(arquivo.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_ALWAYS,
                       FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
}

}  // namespace

std::unique_ptr<TTrava> TTrava::Tenta(const std::filesystem::path& arquivo) {
    const HANDLE aberta = Abre(arquivo);
    if (aberta != INVALID_HANDLE_VALUE) return std::unique_ptr<TTrava>(new TTrava(arquivo, aberta));
    if (GetLastError() == ERROR_SHARING_VIOLATION) return nullptr;
    TravaInutil(arquivo, "erro " + std::to_string(GetLastError()) + " do sistema");
}

std::optional<std::string> TTrava::QuemTem(const std::filesystem::path& arquivo) {
    const HANDLE lida =
        CreateFileW(arquivo.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                    OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (lida == INVALID_HANDLE_VALUE) return std::nullopt;  // it goes with its holder
    std::string texto(kTexto, '\0');
    DWORD lidos = 0;
    ReadFile(lida, texto.data(), kTexto, &lidos, nullptr);
    CloseHandle(lida);
    texto.resize(lidos);
    return texto;
}

void TTrava::Escreve(std::string_view texto) {
    DWORD escritos = 0;
    SetFilePointer(aberta_, 0, nullptr, FILE_BEGIN);
    WriteFile(aberta_, texto.data(), static_cast<DWORD>(texto.size()), &escritos, nullptr);
    SetEndOfFile(aberta_);
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

/// The locked file; -1 when it was removed before the lock was had; nothing when another process has the lock.
std::optional<int> Trava(const std::filesystem::path& arquivo) {
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
    if (erro == EWOULDBLOCK) return std::nullopt;
    TravaInutil(arquivo, std::generic_category().message(erro));
}

}  // namespace

std::unique_ptr<TTrava> TTrava::Tenta(const std::filesystem::path& arquivo) {
    constexpr int kTentativas = 100;
    for (int i = 0; i < kTentativas; ++i) {
        const auto aberta = Trava(arquivo);
        if (!aberta) return nullptr;
        if (*aberta >= 0) return std::unique_ptr<TTrava>(new TTrava(arquivo, *aberta));
    }
    return nullptr;
}

std::optional<std::string> TTrava::QuemTem(const std::filesystem::path& arquivo) {
    const int aberta = open(arquivo.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
    if (aberta < 0) return std::nullopt;
    std::string texto(kTexto, '\0');
    const bool livre = flock(aberta, LOCK_SH | LOCK_NB) == 0;
    const auto lidos = pread(aberta, texto.data(), texto.size(), 0);
    close(aberta);
    if (livre) return std::nullopt;
    texto.resize(lidos > 0 ? static_cast<std::size_t>(lidos) : 0);
    return texto;
}

void TTrava::Escreve(std::string_view texto) {
    if (pwrite(aberta_, texto.data(), texto.size(), 0) == static_cast<ssize_t>(texto.size()) &&
        ftruncate(aberta_, static_cast<off_t>(texto.size())) == 0)
        return;
}

TTrava::~TTrava() {
    unlink(arquivo_.c_str());  // while the lock is held: whoever waits finds another file there and tries again
    close(aberta_);
}

#endif

}  // namespace wkd
