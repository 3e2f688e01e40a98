#include "ConteudoPacote.h"

#include <algorithm>
#include <cstring>

namespace wkd {

namespace {

constexpr std::size_t kMaiorNaMemoria = 4096;
constexpr std::size_t kParte = 32768;

/// Where a blob stands and how.
struct TLugar {
    std::shared_ptr<const TFontePacote> fonte;
    std::string_view trecho;
    TCodigo codigo;
    std::size_t campo;

    [[noreturn]] void Recusa(const TErroTrecho& erro) const { fonte->Recusa(erro, fonte->nomesDosCampos.at(campo)); }
};

class TLeitorPacote : public TLeitorBytes {
  public:
    explicit TLeitorPacote(TLugar lugar) : lugar_(std::move(lugar)) {
        lugar_.codigo = Define(lugar_.codigo, lugar_.trecho);
    }

    std::size_t Le(std::span<char> destino) override {
        while (lida_ == parte_.size() && !lugar_.trecho.empty()) Decodifica();
        const std::size_t bytes = std::min(destino.size(), parte_.size() - lida_);
        if (bytes > 0) std::memcpy(destino.data(), parte_.data() + lida_, bytes);
        lida_ += bytes;
        return bytes;
    }

  private:
    void Decodifica() {
        parte_.clear();
        lida_ = 0;
        try {
            lugar_.trecho.remove_prefix(DecodificaParte(lugar_.codigo, lugar_.trecho, parte_, kParte));
        } catch (const TErroTrecho& erro) {
            lugar_.Recusa(erro);
        }
    }

    TLugar lugar_;
    std::string parte_;
    std::size_t lida_ = 0;
};

class TConteudoPacote : public TConteudo {
  public:
    explicit TConteudoPacote(TLugar lugar) : lugar_(std::move(lugar)) {}
    std::unique_ptr<TLeitorBytes> Abre() const override { return std::make_unique<TLeitorPacote>(lugar_); }

  private:
    TLugar lugar_;
};

}  // namespace

TValor ValorDeBlob(const std::shared_ptr<const TFontePacote>& fonte, std::string_view trecho, TCodigo codigo,
                   std::size_t campo, TTipoDado tipo) {
    if (trecho.size() > kMaiorNaMemoria)
        return TValor(
            std::shared_ptr<const TConteudo>(std::make_shared<TConteudoPacote>(TLugar{fonte, trecho, codigo, campo})));
    auto bytes = Decodifica(codigo, trecho);
    if (tipo == TTipoDado::Memo) return TValor(std::move(bytes));
    return TValor(TBytes{std::move(bytes)});
}

}  // namespace wkd
