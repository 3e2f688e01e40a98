#include "Retrato.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "Linhas.h"
#include "values/Texto.h"

namespace wkd {

std::string Retrato(TConnection& conexao) {
    std::vector<std::string> linhas;
    for (const std::string& tabela : conexao.NomesDeTabelas()) {
        linhas.push_back(tabela + " chave " + Junta(conexao.ChavePrimaria(tabela).colunas, ","));
        for (const auto& coluna : conexao.Colunas(tabela))
            linhas.push_back(tabela + "." + coluna.nome + " " + coluna.tipoSql +
                             (coluna.requerido ? " not null " : " ") + coluna.padrao);
        for (const auto& indice : conexao.Indices(tabela))
            linhas.push_back(tabela + " indice " + indice.nome + (indice.unico ? " unico " : " ") +
                             Junta(indice.colunas, ","));
        if (tabela == "SISTEMA") continue;
        for (const std::string& linha : Divide(Linhas(conexao, "select * from " + tabela), ';'))
            linhas.push_back(tabela + ": " + linha);
    }
    std::ranges::sort(linhas);
    return Junta(linhas, "\n");
}

std::string Diferencas(const std::string& esperado, const std::string& obtido) {
    auto a = Divide(esperado, '\n'), b = Divide(obtido, '\n');
    std::ranges::sort(a);  // a row's text may hold line ends
    std::ranges::sort(b);
    std::vector<std::string> soA, soB;
    std::ranges::set_difference(a, b, std::back_inserter(soA));
    std::ranges::set_difference(b, a, std::back_inserter(soB));
    std::string texto;
    for (const auto& linha : soA) texto += "- " + linha + "\n";
    for (const auto& linha : soB) texto += "+ " + linha + "\n";
    return texto;
}

}  // namespace wkd
