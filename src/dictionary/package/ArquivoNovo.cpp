#include "package/ArquivoNovo.h"

#include <cerrno>
#include <string>
#include <utility>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#endif

#include "package/Caminho.h"
#include "package/Pacote.h"

namespace wkd {

namespace {

std::FILE* Cria(const std::filesystem::path& caminho) {
#ifdef _WIN32
    const int aberto = _wopen(caminho.c_str(), _O_CREAT | _O_EXCL | _O_RDWR | _O_BINARY, _S_IREAD | _S_IWRITE);
    return aberto < 0 ? nullptr : _fdopen(aberto, "wb");
#else
    return std::fopen(caminho.c_str(), "wbx");
#endif
}

std::error_code UltimoErro() { return {errno, std::generic_category()}; }

}  // namespace

void NaoGrava(const std::filesystem::path& caminho, std::error_code erro) {
    const bool cheio = erro == std::errc::no_space_on_device;
    const auto causa = cheio ? std::string("disco cheio. Libere espaço e tente de novo.")
                             : erro.message() + ". Verifique o espaço e as permissões do disco.";
    throw TErroPacote("Não foi possível gravar '" + TextoDoCaminho(caminho) + "': " + causa,
                      cheio ? TFalha::DiscoCheio : TFalha::Arquivo);
}

TArquivoNovo::TArquivoNovo(std::filesystem::path caminho) : caminho_(std::move(caminho)), arquivo_(Cria(caminho_)) {
    if (!arquivo_) NaoGrava(caminho_, UltimoErro());
}

TArquivoNovo::~TArquivoNovo() {
    if (!arquivo_) return;
    std::fclose(arquivo_);
    Apaga();
}

void TArquivoNovo::Apaga() noexcept {
    std::error_code ignorado;
    std::filesystem::remove(caminho_, ignorado);
}

void TArquivoNovo::Grava(std::string_view bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), arquivo_) != bytes.size()) NaoGrava(caminho_, UltimoErro());
}

void TArquivoNovo::Fecha() {
    if (std::fclose(std::exchange(arquivo_, nullptr)) == 0) return;
    const std::error_code erro = UltimoErro();
    Apaga();
    NaoGrava(caminho_, erro);
}

}  // namespace wkd
