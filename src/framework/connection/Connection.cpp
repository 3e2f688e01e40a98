#include "connection/Connection.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "values/Texto.h"

namespace wkd {

namespace {

constexpr std::array<std::string_view, 5> kTextos = {"tbInterbase", "tbMySQL", "tbOracle", "tbSQLServer", "tbODBC"};

}  // namespace

std::string_view TipoBancoToStr(TTipoBanco tipo) { return kTextos[static_cast<std::size_t>(tipo)]; }

std::optional<TTipoBanco> StrToTipoBanco(std::string_view texto) {
    for (std::size_t i = 0; i < kTextos.size(); ++i)
        if (kTextos[i] == texto) return static_cast<TTipoBanco>(i);
    return std::nullopt;
}

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

TTabelaEmMemoria LeTudo(TComando& consulta) {
    TTabelaEmMemoria tabela;
    consulta.Abre();
    tabela.campos = consulta.Campos();
    while (consulta.Proximo()) {
        TLinha& linha = tabela.linhas.emplace_back();
        linha.reserve(tabela.campos.size());
        for (std::size_t i = 0; i < tabela.campos.size(); ++i) linha.push_back(consulta.Valor(i));
    }
    return tabela;
}

}  // namespace wkd
