#include "Connection.h"

#include <algorithm>
#include <stdexcept>

#include "Texto.h"

namespace wkd {

void TComando::Atribui(std::string_view parametro, const TValor& valor) {
    const auto& nomes = Parametros();
    for (std::size_t i = 0; i < nomes.size(); ++i)
        if (IgualSemCaixa(nomes[i], parametro)) return Atribui(i, valor);
    throw std::invalid_argument("o comando não tem o parâmetro " + std::string(parametro));
}

bool TConnection::ExisteTabela(std::string_view tabela) {
    return std::ranges::any_of(NomesDeTabelas(), [&](const std::string& nome) { return IgualSemCaixa(nome, tabela); });
}

TChavesPorTabela TConnection::TodasAsChaves() {
    TChavesPorTabela chaves;
    for (const std::string& tabela : NomesDeTabelas())
        if (auto chave = ChavePrimaria(tabela); !chave.nome.empty())
            chaves.emplace(Maiusculas(tabela), std::move(chave));
    return chaves;
}

}  // namespace wkd
