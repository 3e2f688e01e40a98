#include "copy/InsercaoEmBloco.h"

#include <algorithm>

#include "dialect/Dialeto.h"

namespace wkd {

/// What the dialect reckons may still be more than the server takes.
TInsercaoEmBloco::TInsercaoEmBloco(TConnection& conexao, std::string destino, std::vector<TColunaFisica> colunas,
                                   std::size_t maximo)
    : conexao_(conexao), destino_(std::move(destino)), colunas_(std::move(colunas)) {
    lugares_ = std::max<std::size_t>(std::min(maximo, Dialeto(conexao).LinhasPorInsercao(colunas_)), 1);
    for (; lugares_ > 1; lugares_ /= 2) {
        try {
            cheio_ = Prepara(lugares_);
            return;
        } catch (const TErroBanco& erro) {
            if (erro.ConexaoPerdida()) throw;
        }
    }
}

std::unique_ptr<TComando> TInsercaoEmBloco::Prepara(std::size_t linhas) {
    return conexao_.Prepara(Dialeto(conexao_).InsereLinhas(destino_, colunas_, linhas));
}

void TInsercaoEmBloco::Grava(const std::vector<const TLinha*>& linhas) {
    const bool cheio = linhas.size() == lugares_;
    if (!cheio && noResto_ != linhas.size()) {
        resto_ = Prepara(linhas.size());
        noResto_ = linhas.size();
    }
    TComando& comando = cheio ? *cheio_ : *resto_;
    std::size_t parametro = 0;
    for (const TLinha* linha : linhas)
        for (const TValor& valor : *linha) comando.Atribui(parametro++, valor);
    comando.Executa();
}

}  // namespace wkd
