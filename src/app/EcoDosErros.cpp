#include "EcoDosErros.h"

#include <utility>
#include <vector>

#include "Providencia.h"
#include "TelaRegistrada.h"
#include "Texto.h"

namespace wkd {

namespace {

/// Those of the parts that the line does not say, in one line.
std::string Falta(std::string_view linha, const std::vector<std::string>& partes) {
    std::vector<std::string> faltam;
    for (const auto& parte : partes)
        if (const std::string texto(Apara(parte)); !texto.empty() && linha.find(texto) == std::string_view::npos)
            faltam.push_back(texto);
    return Junta(faltam, " - ");
}

std::string SegundaLinha(std::string_view onde, std::string_view erro) {
    const std::string lugar = onde.empty() ? std::string() : "Em: " + std::string(onde) + ". ";
    return "    " + lugar + "Providência: " + std::string(Providencia(erro));
}

}  // namespace

void TEcoDosErros::Linha(std::string_view linha, std::string_view onde) {
    std::string segunda = onde.empty() ? std::string() : SegundaLinha(onde, linha);
    if (segunda != pendente_) Conclui();
    escreve_(linha);
    linha_ = linha;
    pendente_ = std::move(segunda);
}

void TEcoDosErros::Entrada(std::string_view mensagem, std::string_view tabela, std::string_view acao,
                           std::string_view onde) {
    const std::string daTabela = tabela.empty() ? std::string() : "Tabela: " + std::string(tabela);
    if (linha_.empty() || !MesmoErro(linha_, mensagem)) {
        const std::string passo = Falta(daTabela, {std::string(acao)});
        const std::string nomes = daTabela + (daTabela.empty() || passo.empty() ? "" : " - ") + passo;
        const std::string texto = Falta(nomes, {std::string(mensagem)});
        Linha(nomes + (nomes.empty() || texto.empty() ? "" : " - ") + texto, onde);
    } else if (!onde.empty() && !(tabela.empty() && acao.empty())) {
        const std::string resto = Troca(mensagem, linha_, "");
        pendente_ = SegundaLinha(Falta(linha_, {daTabela, std::string(acao), resto}), mensagem);
    }
    linha_.clear();
}

void TEcoDosErros::Conclui() {
    if (!pendente_.empty()) escreve_(pendente_);
    pendente_.clear();
    linha_.clear();
}

}  // namespace wkd
