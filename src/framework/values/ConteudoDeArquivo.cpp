#include "values/ConteudoDeArquivo.h"

#include <cerrno>
#include <fstream>
#include <system_error>

namespace wkd {

namespace {

[[noreturn]] void Falha(const std::filesystem::path& arquivo) {
    throw std::system_error(errno, std::generic_category(), "Não foi possível ler " + arquivo.string());
}

class TLeitorDeArquivo : public TLeitorBytes {
  public:
    explicit TLeitorDeArquivo(const std::filesystem::path& caminho)
        : caminho_(caminho), arquivo_(caminho, std::ios::binary) {
        if (!arquivo_) Falha(caminho_);
    }

    std::size_t Le(std::span<char> destino) override {
        arquivo_.read(destino.data(), static_cast<std::streamsize>(destino.size()));
        if (arquivo_.bad()) Falha(caminho_);
        return static_cast<std::size_t>(arquivo_.gcount());
    }

  private:
    std::filesystem::path caminho_;
    std::ifstream arquivo_;
};

class TConteudoDeArquivo : public TConteudo {
  public:
    explicit TConteudoDeArquivo(std::filesystem::path caminho) : caminho_(std::move(caminho)) {}
    std::unique_ptr<TLeitorBytes> Abre() const override { return std::make_unique<TLeitorDeArquivo>(caminho_); }

  private:
    std::filesystem::path caminho_;
};

}  // namespace

std::shared_ptr<const TConteudo> ConteudoDeArquivo(const std::filesystem::path& arquivo) {
    return std::make_shared<TConteudoDeArquivo>(arquivo);
}

}  // namespace wkd
