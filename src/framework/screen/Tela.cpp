#include "screen/Tela.h"

namespace wkd {

TErroDaExecucao TErroDaExecucao::NoLog(TErro erro, std::string_view tabela, std::string_view acao) {
    TErroDaExecucao execucao{.erro = std::move(erro), .tabela = std::string(tabela), .acao = std::string(acao)};
    execucao.entrada = {execucao.erro.mensagem, execucao.tabela, execucao.acao};
    return execucao;
}

TErroDaExecucao TErroDaExecucao::NosDois(TErro erro, std::string_view tabela, std::string_view acao) {
    std::string linha = erro.mensagem;
    return NosDois(std::move(erro), tabela, acao, std::move(linha));
}

TErroDaExecucao TErroDaExecucao::NosDois(TErro erro, std::string_view tabela, std::string_view acao,
                                         std::string linha) {
    TErroDaExecucao execucao = NoLog(std::move(erro), tabela, acao);
    execucao.linha = std::move(linha);
    return execucao;
}

TErroDaExecucao TErroDaExecucao::NaLista(TErro erro, std::string_view tabela) {
    std::string linha = erro.mensagem;
    return {.erro = std::move(erro), .tabela = std::string(tabela), .acao = {}, .linha = std::move(linha)};
}

TErroDaExecucao TErroDaExecucao::NaCaixa(TErro erro, std::string_view tabela) {
    return {.erro = std::move(erro), .tabela = std::string(tabela), .acao = {}, .caixa = true};
}

TErroDaExecucao TErroDaExecucao::ComComando(std::string_view comando) && {
    entrada->mensagem.append(" Query: ").append(comando);
    erro.comando = comando;
    return std::move(*this);
}

void ITela::Erro(TErroDaExecucao erro) {
    Relata(erro);
    Guarda(std::move(erro));
}

void ITela::Guarda(TErroDaExecucao erro) {
    erro.quando = Agora();
    erros_.push_back(std::move(erro));
}

void ITela::Relata(const TErroDaExecucao& erro) {
    if (erro.caixa) return Informacao(erro.erro.mensagem);
    if (!erro.linha.empty()) Memo2(erro.linha);
    if (erro.entrada) SetLog(erro.entrada->mensagem, erro.entrada->tabela, erro.entrada->acao);
}

}  // namespace wkd
