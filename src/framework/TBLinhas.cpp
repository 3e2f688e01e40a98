#include <stdexcept>

#include "TB.h"
#include "Texto.h"
#include "WKDQuery.h"

namespace wkd {

namespace {

using TValores = std::vector<std::pair<std::string, TValor>>;

/// Names turned by `forma` of (column, parameter number from `primeiro` on).
template <class TForma>
std::vector<std::string> Pedacos(const TValores& valores, std::size_t primeiro, TForma forma) {
    std::vector<std::string> pedacos;
    for (std::size_t i = 0; i < valores.size(); ++i)
        pedacos.push_back(forma(valores[i].first, ":p" + std::to_string(primeiro + i)));
    return pedacos;
}

std::string Igualdade(const std::string& coluna, const std::string& parametro) { return coluna + " = " + parametro; }

std::string ComandoInsere(const std::string& tabela, const TValores& valores) {
    const auto colunas = Pedacos(valores, 0, [](const std::string& coluna, const std::string&) { return coluna; });
    const auto marcas = Pedacos(valores, 0, [](const std::string&, const std::string& marca) { return marca; });
    return "insert into " + tabela + " (" + Junta(colunas, ",") + ") values (" + Junta(marcas, ",") + ")";
}

std::string ComandoAltera(const std::string& tabela, const TValores& valores, const TValores& chave,
                          const std::string& condicao) {
    const std::string onde = chave.empty() ? condicao : Junta(Pedacos(chave, valores.size(), Igualdade), " and ");
    return "update " + tabela + " set " + Junta(Pedacos(valores, 0, Igualdade), ",") + " where " + onde;
}

}  // namespace

bool TTB::PosicionaTB(std::string_view tabela, std::string_view condicao) {
    linha_ = {};
    linha_.tabela = tabela;
    const auto colunas = conexao_.ChavePrimaria(tabela).colunas;
    TWKDQuery q(conexao_, "select " + (colunas.empty() ? "1 as um" : Junta(colunas, ",")) + " from " + linha_.tabela +
                              " where " + std::string(condicao));
    q.Open();
    if (q.Eof()) return false;
    for (const auto& coluna : colunas) linha_.chave.emplace_back(coluna, q.Campo(coluna));
    linha_.condicao = condicao;
    return true;
}

void TTB::Novo(std::string_view tabela) {
    linha_ = {};
    linha_.tabela = tabela;
    linha_.modo = TLinhaAtual::TModo::Inclusao;
}

void TTB::Editar() {
    if (linha_.condicao.empty()) throw std::logic_error("Editar sem registro posicionado");
    linha_.valores.clear();
    linha_.modo = TLinhaAtual::TModo::Edicao;
}

void TTB::SetValor(std::string_view campo, const TValor& valor) {
    if (linha_.modo == TLinhaAtual::TModo::Consulta) throw std::logic_error("SetValor fora de Novo ou Editar");
    for (auto& [nome, atual] : linha_.valores) {
        if (!IgualSemCaixa(nome, campo)) continue;
        atual = valor;
        return;
    }
    linha_.valores.emplace_back(campo, valor);
}

void TTB::Grava() {
    if (linha_.modo == TLinhaAtual::TModo::Consulta) throw std::logic_error("Grava fora de Novo ou Editar");
    const TLinhaAtual linha = std::exchange(linha_, {});
    if (linha.valores.empty()) return;

    const bool inclusao = linha.modo == TLinhaAtual::TModo::Inclusao;
    const auto comando =
        conexao_.Prepara(inclusao ? ComandoInsere(linha.tabela, linha.valores)
                                  : ComandoAltera(linha.tabela, linha.valores, linha.chave, linha.condicao));
    std::size_t parametro = 0;
    for (const auto& [nome, valor] : linha.valores) comando->Atribui(parametro++, valor);
    if (!inclusao)
        for (const auto& [nome, valor] : linha.chave) comando->Atribui(parametro++, valor);
    TTransacao transacao(conexao_);
    comando->Executa();
    transacao.Commit();
}

}  // namespace wkd
