#include "PedeSenha.h"

#include <cstdio>
#include <iostream>

#include "Interrupcao.h"

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#else
#include <poll.h>
#include <termios.h>
#include <unistd.h>
#endif

namespace wkd {

namespace {

#ifdef _WIN32
bool EntradaEhTerminal() { return _isatty(_fileno(stdin)) != 0; }

class TSemEco {
  public:
    TSemEco() : entrada_(GetStdHandle(STD_INPUT_HANDLE)) {
        GetConsoleMode(entrada_, &modo_);
        SetConsoleMode(entrada_, modo_ & ~ENABLE_ECHO_INPUT);
    }
    ~TSemEco() { SetConsoleMode(entrada_, modo_); }
    TSemEco(const TSemEco&) = delete;
    TSemEco& operator=(const TSemEco&) = delete;

  private:
    HANDLE entrada_;
    DWORD modo_ = 0;
};

void EsperaEntrada() {}
#else
bool EntradaEhTerminal() { return isatty(STDIN_FILENO) != 0; }

class TSemEco {
  public:
    TSemEco() {
        tcgetattr(STDIN_FILENO, &antes_);
        termios mudo = antes_;
        mudo.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &mudo);
    }
    ~TSemEco() { tcsetattr(STDIN_FILENO, TCSAFLUSH, &antes_); }
    TSemEco(const TSemEco&) = delete;
    TSemEco& operator=(const TSemEco&) = delete;

  private:
    termios antes_{};
};

/// Who gives up at the question gets the terminal back as it was.
void EsperaEntrada() {
    constexpr int kMilissegundos = 100;
    pollfd entrada{STDIN_FILENO, POLLIN, 0};
    while (poll(&entrada, 1, kMilissegundos) == 0) TInterrupcao::Confere();
}
#endif

std::string LeLinha() {
    EsperaEntrada();
    std::string linha;
    std::getline(std::cin, linha);
    if (linha.ends_with('\r')) linha.pop_back();
    return linha;
}

}  // namespace

std::string PedeSenha() {
    if (!EntradaEhTerminal()) return LeLinha();
    std::fputs("Senha: ", stderr);
    std::string senha;
    {
        TSemEco semEco;
        senha = LeLinha();
    }
    std::fputs("\n", stderr);
    return senha;
}

}  // namespace wkd
