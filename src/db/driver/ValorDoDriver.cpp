#include "driver/ValorDoDriver.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>

#include "values/Erros.h"

namespace wkd {

namespace {

/// The number times 10^escala, when that is a whole one.
std::int64_t Reescala(TDecimal d, int escala, const TValor& valor) {
    constexpr auto kMaior = std::numeric_limits<std::int64_t>::max() / 10;
    for (; d.escala < escala; ++d.escala) {
        if (d.valor > kMaior || d.valor < -kMaior) NaoCabe(valor, "um número de ponto fixo");
        d.valor *= 10;
    }
    for (; d.escala > escala; --d.escala) {
        if (d.valor % 10 != 0) NaoCabe(valor, std::to_string(escala) + " casas decimais");
        d.valor /= 10;
    }
    return d.valor;
}

std::int64_t ReescalaDouble(double v, int escala, const TValor& valor) {
    const double exato = v * std::pow(10.0, escala);
    const double inteiro = std::round(exato);
    if (!(std::abs(inteiro) < 9.2233720368547748e18) || std::abs(inteiro - exato) > 1e-12 * std::abs(exato))
        NaoCabe(valor, "um número com " + std::to_string(escala) + " casas decimais");
    return static_cast<std::int64_t>(inteiro);
}

}  // namespace

void NaoCabe(const TValor& valor, std::string_view em) {
    throw TErroConversao("o valor " + valor.ComoTexto() + " não cabe em " + std::string(em));
}

std::int64_t NumeroFixo(const TValor& valor, int escala) {
    if (const auto* inteiro = valor.Se<std::int64_t>()) return Reescala({*inteiro, 0}, escala, valor);
    if (const auto* decimal = valor.Se<TDecimal>()) return Reescala(*decimal, escala, valor);
    if (const auto* real = valor.Se<double>()) return ReescalaDouble(*real, escala, valor);
    return Reescala(valor.Como<TDecimal>(TTipoDado::Decimal), escala, valor);
}

double Flutuante(const TValor& valor) {
    const double v = valor.Como<double>(TTipoDado::Flutuante);
    const auto* inteiro = valor.Se<std::int64_t>();
    if (inteiro && (std::abs(v) >= 9.2233720368547758e18 || static_cast<std::int64_t>(v) != *inteiro))
        NaoCabe(valor, "um número de ponto flutuante");
    return v;
}

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
