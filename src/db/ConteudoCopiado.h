#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "Valor.h"

namespace wkd {

/// Bytes kept in memory, or in a temporary file without a name once they are more than 1 MB.
class TConteudoCopiado : public TConteudo {
  public:
    TConteudoCopiado() = default;
    explicit TConteudoCopiado(TLeitorBytes& fonte);

    void Guarda(std::string_view bytes);
    std::size_t Tamanho() const { return dados_->tamanho; }
    std::unique_ptr<TLeitorBytes> Abre() const override;

  private:
    struct TDados {
        std::string memoria;
        std::unique_ptr<std::FILE, int (*)(std::FILE*)> arquivo{nullptr, &std::fclose};
        std::size_t tamanho = 0;
    };
    class TLeitor;

    void PassaParaArquivo();
    void Escreve(std::string_view bytes);

    std::shared_ptr<TDados> dados_ = std::make_shared<TDados>();
};

}  // namespace wkd
