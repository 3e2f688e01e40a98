#include "commands/LinhaDoTerminal.h"

#include <vector>

#include "commands/Eco.h"
#include "process/Terminal.h"
#include "values/Texto.h"

namespace wkd {

namespace {

bool ComecaCaractere(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }

}  // namespace

std::string Corta(std::string_view texto, std::size_t colunas) {
    std::size_t caracteres = 0, fim = 0;
    for (std::size_t i = 0; i < texto.size(); ++i) {
        if (!ComecaCaractere(texto[i])) continue;
        if (++caracteres == colunas) fim = i;
    }
    return caracteres <= colunas ? std::string(texto) : std::string(texto.substr(0, fim)) + "…";
}

TLinhaDoTerminal::TLinhaDoTerminal() : existe_(SaidaSeReescreve()) {}

void TLinhaDoTerminal::Mostra(std::string_view texto) {
    if (!existe_) return;
    const std::string linha = Corta(texto, LarguraDoTerminal() - 1);  // a full line would wrap
    if (linha == mostrada_) return;
    EscreveNoTerminal("\r\x1b[K" + linha);
    mostrada_ = linha;
}

void TLinhaDoTerminal::Apaga() {
    if (mostrada_.empty()) return;
    EscreveNoTerminal("\r\x1b[K");
    mostrada_.clear();
}

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
