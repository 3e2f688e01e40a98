#include "packet/FontePacote.h"

#include <algorithm>
#include <system_error>

#include "package/Caminho.h"
#include "packet/Codigos.h"

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

namespace {

constexpr std::string_view kMagica("\x96\x19\xE0\xBD", 4);

}  // namespace

TFontePacote::TFontePacote(const std::filesystem::path& arquivo) try : arquivo_(arquivo), mapa_(arquivo) {
    bytes_ = mapa_.Bytes();
    try {
        Reconhece();
    } catch (const TErroTrecho& erro) {
        Recusa(erro, {});
    }
} catch (const std::system_error& erro) {
    const auto causa = erro.code() == std::errc::no_such_file_or_directory ? "não existe" : erro.code().message();
    throw TErroPacote("O pacote de dados '" + TextoDoCaminho(arquivo) + "' não pôde ser lido: " + causa +
                      ". Baixe o pacote de novo.");
}

void TFontePacote::Reconhece() {
    if (bytes_.empty()) throw TErroTrecho{bytes_.data(), "o arquivo está vazio"};
    if (bytes_.starts_with(kMagica)) {
        forma_ = TFormaPacote::Binario;
    } else if (bytes_.starts_with("\xEF\xBB\xBF")) {
        bytes_.remove_prefix(3);
        marcaUtf8_ = true;
    } else if (bytes_.starts_with("\xFF\xFE") || bytes_.starts_with("\xFE\xFF")) {
        std::string trocado(bytes_.substr(2));
        if (bytes_.front() == '\xFE')
            for (std::size_t i = 1; i < trocado.size(); i += 2) std::swap(trocado[i - 1], trocado[i]);
        try {
            convertido_ = Decodifica(TCodigo::Utf16, trocado);
        } catch (const TErroTrecho& erro) {
            throw TErroTrecho{bytes_.data() + 2 + (erro.onde - trocado.data()), erro.causa};
        }
        bytes_ = convertido_;
        marcaUtf8_ = true;
    }
}

void TFontePacote::Recusa(const TErroTrecho& erro, std::string_view campo) const {
    std::string texto = "O pacote de dados '" + NomeDoArquivo(arquivo_) + "' não pode ser lido: ";
    if (!bytes_.empty()) {
        const auto inicio = convertido_.empty() ? mapa_.Bytes().data() : convertido_.data();
        if (forma_ == TFormaPacote::Xml)
            texto += "linha " + std::to_string(1 + std::count(inicio, erro.onde, '\n')) + ", ";
        texto += "posição " + std::to_string(erro.onde - inicio) + ", ";
    }
    if (!campo.empty()) texto += "campo '" + std::string(campo) + "': ";
    throw TErroPacote(texto + erro.causa + ". Baixe o pacote de novo ou peça outro ao suporte.");
}

}  // namespace wkd
