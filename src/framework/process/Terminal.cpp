#include "process/Terminal.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iostream>

#include "process/Interrupcao.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <shellapi.h>
#else
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>
#endif

namespace wkd {

#ifdef _WIN32

/// The arguments of main() are in the system's own character set, which has no place for most names.
std::vector<std::string> ArgumentosDoPrograma(int, char**) {
    std::vector<std::string> argumentos;
    int quantos = 0;
    wchar_t** textos = CommandLineToArgvW(GetCommandLineW(), &quantos);
    for (int i = 1; i < quantos; ++i) argumentos.push_back(std::filesystem::path(textos[i]).string());
    LocalFree(textos);
    return argumentos;
}

namespace {

UINT saidaAntes = 0;

/// Leads a stream that nobody has led anywhere to the console, or nowhere.
void Abre(std::FILE* fluxo, int numero, DWORD qual, const wchar_t* console, const wchar_t* modo) {
    DWORD umModo = 0;
    const HANDLE atual = GetStdHandle(qual);
    const bool levada = atual != nullptr && atual != INVALID_HANDLE_VALUE &&
                        (GetFileType(atual) != FILE_TYPE_UNKNOWN || GetConsoleMode(atual, &umModo));
    if (levada && _fileno(fluxo) == numero) return;
    if (!_wfreopen(GetConsoleWindow() ? console : L"NUL", modo, fluxo) && !_wfreopen(L"NUL", modo, fluxo)) return;
    if (_fileno(fluxo) != numero) _dup2(_fileno(fluxo), numero);
    SetStdHandle(qual, reinterpret_cast<HANDLE>(_get_osfhandle(numero)));
}

}  // namespace

void PreparaSaidas() {
    if (!GetConsoleWindow()) AttachConsole(ATTACH_PARENT_PROCESS);
    Abre(stdin, 0, STD_INPUT_HANDLE, L"CONIN$", L"r");
    Abre(stdout, 1, STD_OUTPUT_HANDLE, L"CONOUT$", L"w");
    Abre(stderr, 2, STD_ERROR_HANDLE, L"CONOUT$", L"w");
    for (const int saida : {1, 2}) _setmode(saida, _O_BINARY);
    saidaAntes = GetConsoleOutputCP();
    SetConsoleOutputCP(CP_UTF8);
}

void DevolveConsole() noexcept {
    if (saidaAntes != 0) SetConsoleOutputCP(saidaAntes);
}

static void EsperaEntrada() {}

bool EntradaEhTerminal() {
    DWORD modo = 0;
    return GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &modo) != 0;
}

/// As the keys were, whatever the console's character set.
std::string LeSemEco() {
    const HANDLE entrada = GetStdHandle(STD_INPUT_HANDLE);
    DWORD modo = 0, lidos = 0;
    wchar_t linha[1024];
    GetConsoleMode(entrada, &modo);
    SetConsoleMode(entrada, modo & ~static_cast<DWORD>(ENABLE_ECHO_INPUT));
    const bool leu = ReadConsoleW(entrada, linha, static_cast<DWORD>(std::size(linha)), &lidos, nullptr);
    SetConsoleMode(entrada, modo);
    TInterrupcao::Confere();
    std::wstring texto(linha, leu ? lidos : 0);
    texto.resize(std::min(texto.find_first_of(L"\r\n"), texto.size()));
    return std::filesystem::path(texto).string();
}

#else

std::vector<std::string> ArgumentosDoPrograma(int argc, char** argv) { return {argv + 1, argv + argc}; }

void PreparaSaidas() {
    while (true) {
        const int aberta = open("/dev/null", O_RDWR);
        if (aberta > STDERR_FILENO) close(aberta);
        if (aberta < 0 || aberta > STDERR_FILENO) return;
    }
}

void DevolveConsole() noexcept {}

bool EntradaEhTerminal() { return isatty(STDIN_FILENO) != 0; }

namespace {

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

void EsperaEntrada() {
    constexpr int kMilissegundos = 100;
    pollfd entrada{STDIN_FILENO, POLLIN, 0};
    while (poll(&entrada, 1, kMilissegundos) == 0) TInterrupcao::Confere();
}

}  // namespace

std::string LeSemEco() {
    const TSemEco semEco;
    return LeLinha();
}

#endif

std::string LeLinha() {
    EsperaEntrada();
    std::string linha;
    std::getline(std::cin, linha);
    if (linha.ends_with('\r')) linha.pop_back();
    return linha;
}

}  // namespace wkd
