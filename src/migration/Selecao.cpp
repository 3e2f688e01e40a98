#include "Selecao.h"

#include "Texto.h"

namespace wkd {

std::vector<std::string> NomesListados(const std::vector<std::string>& linhas) {
    std::vector<std::string> nomes;
    for (const auto& linha : linhas)
        if (const auto nome = Apara(linha); !nome.empty()) nomes.emplace_back(nome);
    return nomes;
}

std::string FiltroDeTabelas(const std::vector<std::string>& tabelas) {
    if (tabelas.empty()) return {};
    const auto compara = [](const std::string& tabela) { return "Upper(nome_arquivo) = " + Aspas(Maiusculas(tabela)); };
    if (tabelas.size() == 1) return compara(tabelas.front());

    std::string filtro = "((" + compara(tabelas.front()) + ")";
    for (std::size_t i = 1; i < tabelas.size(); ++i) filtro += " or (" + compara(tabelas[i]) + ")";
    return filtro + ")";
}

}  // namespace wkd
