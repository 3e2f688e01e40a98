#include "Renumeracao.h"

#include <algorithm>

#include "Texto.h"

namespace wkd {

namespace {

/// Number of a dictionary field; 0 when the package has no such field.
std::int64_t Numero(const TClientDataSet& dados, std::string_view campo) {
    return dados.IndiceDoCampo(campo) < 0 ? 0 : dados.Inteiro(campo);
}

}  // namespace

TRenumeracao::TRenumeracao(TClientDataSet& satribNovo) {
    for (satribNovo.First(); !satribNovo.Eof(); satribNovo.Next()) {
        const bool inteira = Minusculas(Apara(satribNovo.Texto("tipo"))) == "ftinteger";
        const bool exigida =
            Numero(satribNovo, "chave_de_pesquisa") == 1 || Numero(satribNovo, "preenchimento_obrigatorio") == 1;
        if (inteira && exigida && Numero(satribNovo, "incremento") > 0)
            contadores_.push_back({std::string(Apara(satribNovo.Texto("nome"))), 0});
    }
}

bool TRenumeracao::Tem(std::string_view coluna) const {
    return std::ranges::any_of(contadores_,
                               [&](const auto& contador) { return IgualSemCaixa(contador.coluna, coluna); });
}

TValor TRenumeracao::Numera(std::string_view coluna, const TValor& valor) {
    if (valor.ComoInteiro() != 0) return valor;
    const auto contador =
        std::ranges::find_if(contadores_, [&](const auto& c) { return IgualSemCaixa(c.coluna, coluna); });
    return std::int64_t{++contador->ultimo};
}

}  // namespace wkd
