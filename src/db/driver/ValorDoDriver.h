#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "values/Valor.h"

namespace wkd {

/// The number times 10^escala, for a fixed-point column. A double is rounded to the decimal places when that changes
/// nothing in its first twelve digits. Throws TErroConversao for what the column cannot hold whole.
std::int64_t NumeroFixo(const TValor& valor, int escala);

/// Number for a floating column. Throws TErroConversao for an integer that a double does not hold.
double Flutuante(const TValor& valor);

/// Throws the TErroConversao "o valor ... não cabe em ...".
[[noreturn]] void NaoCabe(const TValor& valor, std::string_view em);

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
