#include "Console.h"

#include <cstdio>

namespace wkd {

namespace {

/// One line per call, so that a reader at the other end of a pipe sees it at once.
void Escreve(std::FILE* saida, std::string_view linha) {
    std::fwrite(linha.data(), 1, linha.size(), saida);
    std::fputc('\n', saida);
    std::fflush(saida);
}

}  // namespace

void TTelaConsole::Memo1(std::string_view linha) { Escreve(stdout, linha); }

void TTelaConsole::Memo2(std::string_view linha) {
    houveErro_ = true;
    Escreve(stderr, linha);
}

void TTelaConsole::Informacao(std::string_view texto) {
    Memo2(texto);
    SetLog(texto, "", "");
}

bool TTelaConsole::Confirmacao(std::string_view texto, bool semPessoa) {
    Informacao(std::string(texto) + (semPessoa ? " Sim" : " Não") + " (sem ninguém à frente)");
    return semPessoa;
}

TAcaoReconcilia TTelaConsole::Reconcilia(std::string_view erro, TAcaoReconcilia semPessoa) {
    Informacao(erro);
    return semPessoa;
}

void TTelaConsole::SetLog(std::string_view mensagem, std::string_view tabela, std::string_view acao) {
    houveErro_ = true;
    try {
        log_.SetLog(mensagem, tabela, acao, Agora());
    } catch (const std::exception& erro) {
        if (!logFalhou_) Memo2(erro.what());
        logFalhou_ = true;
    }
}

}  // namespace wkd
