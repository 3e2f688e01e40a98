#include "package/ArquivoNovo.h"

#include <cerrno>
#include <string>
#include <utility>

#include "package/Caminho.h"
#include "package/Pacote.h"

namespace wkd {

namespace {

std::FILE* Cria(const std::filesystem::path& caminho) {
#ifdef _WIN32
    return _wfopen(caminho.c_str(), L"wbx");
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
    if (arquivo_) std::fclose(arquivo_);
}

void TArquivoNovo::Grava(std::string_view bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), arquivo_) != bytes.size()) NaoGrava(caminho_, UltimoErro());
}

void TArquivoNovo::Fecha() {
    if (std::fclose(std::exchange(arquivo_, nullptr)) != 0) NaoGrava(caminho_, UltimoErro());
}

}  // namespace wkd
