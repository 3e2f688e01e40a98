#include "Renumeracao.h"

#include <algorithm>

#include "TBComandos.h"
#include "Texto.h"
#include "WKDQuery.h"

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

void TRenumeracao::Continua(TConnection& conexao, const std::string& tabela) {
    const auto colunas = conexao.Colunas(tabela);
    for (auto& contador : contadores_) {
        if (!ColunaDeNome(colunas, contador.coluna)) continue;
        TWKDQuery q(conexao,
                    "select max(" + Identificador(contador.coluna, conexao.TipoBanco()) + ") as ULTIMO from " + tabela);
        q.Open();
        contador.ultimo = std::max<std::int64_t>(q.Inteiro("ULTIMO"), 0);
    }
}

TValor TRenumeracao::Numera(std::string_view coluna, const TValor& valor) {
    if (valor.ComoInteiro() != 0) return valor;
    return ++Contador(coluna).ultimo;
}

TRenumeracao::TContador& TRenumeracao::Contador(std::string_view coluna) {
    return *std::ranges::find_if(contadores_, [&](const auto& c) { return IgualSemCaixa(c.coluna, coluna); });
}

}  // namespace wkd
