#include "Andamento.h"

#include <vector>

#include "Texto.h"

namespace wkd {

namespace {

bool Diz(std::string_view rotulo) { return !rotulo.empty() && rotulo != "Parado."; }

}  // namespace

std::string LinhaDeAndamento(const TAndamento& andamento) {
    std::vector<std::string> partes;
    if (Diz(andamento.geral))
        partes.push_back("Tabela " + std::to_string(andamento.tabelasFeitas + 1) + " de " +
                         std::to_string(andamento.tabelas));
    if (!andamento.estimativa.empty()) partes.emplace_back(andamento.estimativa);
    const std::string_view rotulo = Diz(andamento.atual) ? andamento.atual : andamento.geral;
    if (Diz(rotulo)) partes.emplace_back(rotulo);
    return Junta(partes, " | ");
}

}  // namespace wkd
