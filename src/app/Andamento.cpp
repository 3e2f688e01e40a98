#include "Andamento.h"

#include <vector>

#include "Texto.h"

namespace wkd {

namespace {

bool Diz(std::string_view rotulo) { return !rotulo.empty() && rotulo != "Parado."; }

}  // namespace

std::string TextoDoAndamento(const TAndamento& andamento) {
    std::vector<std::string> partes;
    if (!andamento.semResposta.empty()) partes.emplace_back(andamento.semResposta);
    if (Diz(andamento.geral))
        partes.push_back("Tabela " + std::to_string(andamento.tabelasFeitas + 1) + " de " +
                         std::to_string(andamento.tabelas));
    if (!andamento.estimativa.empty()) partes.emplace_back(andamento.estimativa);
    return Junta(partes, " | ");
}

std::string LinhaDeAndamento(const TAndamento& andamento) {
    const std::string_view rotulo = Diz(andamento.atual) ? andamento.atual : andamento.geral;
    std::string texto = TextoDoAndamento(andamento);
    if (!Diz(rotulo)) return texto;
    return texto.empty() ? std::string(rotulo) : texto + " | " + std::string(rotulo);
}

}  // namespace wkd
