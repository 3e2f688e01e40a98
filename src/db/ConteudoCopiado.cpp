#include "ConteudoCopiado.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>

namespace wkd {
namespace {

constexpr std::size_t kPedaco = 32 * 1024;
constexpr std::size_t kNaMemoria = 1024 * 1024;

}  // namespace

class TConteudoCopiado::TLeitor : public TLeitorBytes {
  public:
    explicit TLeitor(std::shared_ptr<const TDados> dados) : dados_(std::move(dados)) {}

    std::size_t Le(std::span<char> destino) override {
        const auto quantos = std::min(destino.size(), dados_->tamanho - posicao_);
        if (!dados_->arquivo) {
            std::memcpy(destino.data(), dados_->memoria.data() + posicao_, quantos);
        } else if (std::fseek(dados_->arquivo.get(), static_cast<long>(posicao_), SEEK_SET) != 0 ||
                   std::fread(destino.data(), 1, quantos, dados_->arquivo.get()) != quantos) {
            throw std::runtime_error("não foi possível ler o arquivo temporário de um blob");
        }
        posicao_ += quantos;
        return quantos;
    }

  private:
    std::shared_ptr<const TDados> dados_;
    std::size_t posicao_ = 0;
};

TConteudoCopiado::TConteudoCopiado(TLeitorBytes& fonte) {
    std::array<char, kPedaco> pedaco;
    while (const auto lidos = fonte.Le(pedaco)) Guarda({pedaco.data(), lidos});
}

std::unique_ptr<TLeitorBytes> TConteudoCopiado::Abre() const { return std::make_unique<TLeitor>(dados_); }

void TConteudoCopiado::Guarda(std::string_view bytes) {
    dados_->tamanho += bytes.size();
    if (!dados_->arquivo) {
        dados_->memoria += bytes;
        if (dados_->memoria.size() > kNaMemoria) PassaParaArquivo();
    } else {
        Escreve(bytes);
    }
}

void TConteudoCopiado::PassaParaArquivo() {
    dados_->arquivo.reset(std::tmpfile());
    if (!dados_->arquivo) throw std::runtime_error("não foi possível criar o arquivo temporário de um blob");
    Escreve(dados_->memoria);
    dados_->memoria = {};
}

void TConteudoCopiado::Escreve(std::string_view bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), dados_->arquivo.get()) != bytes.size())
        throw std::runtime_error("não foi possível gravar o arquivo temporário de um blob");
}

}  // namespace wkd
