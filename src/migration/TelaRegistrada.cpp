#include "TelaRegistrada.h"

namespace wkd {

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
        const bool contida = ultimo.mensagem.find(mensagem) != std::string::npos;
        const bool contem = mensagem.find(ultimo.mensagem) != std::string_view::npos;
        const bool mesmo = ultimo.acao.empty() && ultimo.tabela.empty() && (!tabela.empty() || !acao.empty());
        if (mesmo && (contida || contem)) {
            if (contem) ultimo.mensagem = mensagem;
            ultimo.tabela = tabela;
            ultimo.acao = acao;
            return;
        }
    }
    erros_.push_back({Agora(), std::string(tabela), std::string(acao), std::string(mensagem)});
}

}  // namespace wkd
