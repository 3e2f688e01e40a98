#include "TelaRegistrada.h"

namespace wkd {

bool MesmoErro(std::string_view linha, std::string_view mensagem) {
    return linha.find(mensagem) != std::string_view::npos || mensagem.find(linha) != std::string_view::npos;
}

void TTelaRegistrada::Memo2(std::string_view linha) {
    tela_.Memo2(linha);
    Guarda(linha, "", "");
}

void TTelaRegistrada::Informacao(std::string_view texto) {
    tela_.Informacao(texto);
    Guarda(texto, "", "");
}

bool TTelaRegistrada::Confirmacao(std::string_view texto, bool semPessoa) {
    const bool sim = tela_.Confirmacao(texto, semPessoa);
    if (!sim) Guarda(std::string(texto) + " Não", "", "");
    return sim;
}

TAcaoReconcilia TTelaRegistrada::Reconcilia(std::string_view erro, TAcaoReconcilia semPessoa) {
    Guarda(erro, "", "");
    return tela_.Reconcilia(erro, semPessoa);
}

void TTelaRegistrada::SetLog(std::string_view mensagem, std::string_view tabela, std::string_view acao) {
    tela_.SetLog(mensagem, tabela, acao);
    Guarda(mensagem, tabela, acao);
}

void TTelaRegistrada::Guarda(std::string_view mensagem, std::string_view tabela, std::string_view acao) {
    if (!erros_.empty()) {
        TErroRegistrado& ultimo = erros_.back();
        const bool mesmo = ultimo.acao.empty() && ultimo.tabela.empty() && (!tabela.empty() || !acao.empty());
        if (mesmo && MesmoErro(ultimo.mensagem, mensagem)) {
            if (mensagem.size() > ultimo.mensagem.size()) ultimo.mensagem = mensagem;
            ultimo.tabela = tabela;
            ultimo.acao = acao;
            return;
        }
    }
    erros_.push_back({Agora(), std::string(tabela), std::string(acao), std::string(mensagem)});
}

}  // namespace wkd
