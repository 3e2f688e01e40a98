#include "process/Terminal.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <streambuf>

#include "process/Interrupcao.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <shellapi.h>
#else
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>
#include <cerrno>
#endif

namespace wkd {

namespace {

constexpr std::size_t kLarguraDesconhecida = 80;

std::string LeDaEntrada() {
    std::string linha;
    std::getline(std::cin, linha);
    if (linha.ends_with('\r')) linha.pop_back();
    return linha;
}

}  // namespace

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
void Abre(int fluxo, DWORD qual, const wchar_t* console) {
    DWORD modo = 0;
    const HANDLE atual = GetStdHandle(qual);
    const bool levado = atual != nullptr && atual != INVALID_HANDLE_VALUE &&
                        (GetFileType(atual) != FILE_TYPE_UNKNOWN || GetConsoleMode(atual, &modo));
    if (levado && _get_osfhandle(fluxo) >= 0) return;
    // To ask a console anything takes the right to read it.
    int aberto = GetConsoleWindow() ? _wopen(console, _O_RDWR) : -1;
    if (aberto < 0) aberto = _wopen(L"NUL", _O_RDWR);
    if (aberto != fluxo && _dup2(aberto, fluxo) == 0) _close(aberto);
    SetStdHandle(qual, reinterpret_cast<HANDLE>(_get_osfhandle(fluxo)));
}

/// What a program writes to a stream, in whole lines: the C library hands a console single bytes, which tears UTF-8
/// apart.
class TLinhasInteiras : public std::streambuf {
  public:
    explicit TLinhasInteiras(int fluxo) : fluxo_(fluxo), terminal_(EhTerminal(fluxo)) {}

  protected:
    std::streamsize xsputn(const char* bytes, std::streamsize quantos) override {
        constexpr std::size_t kBloco = 1 << 14;
        texto_.append(bytes, static_cast<std::size_t>(quantos));
        if (texto_.size() >= kBloco || (terminal_ && texto_.ends_with('\n'))) sync();
        return quantos;
    }
    int_type overflow(int_type byte) override {
        const char caractere = traits_type::to_char_type(byte);
        if (!traits_type::eq_int_type(byte, traits_type::eof())) xsputn(&caractere, 1);
        return traits_type::not_eof(byte);
    }
    int sync() override {
        for (std::string_view resto = texto_; !resto.empty();) {
            const std::size_t escritos = GravaNoFluxo(fluxo_, resto);
            if (escritos == 0) break;
            resto.remove_prefix(escritos);
        }
        texto_.clear();
        return 0;
    }

  private:
    int fluxo_;
    bool terminal_;
    std::string texto_;
};

}  // namespace

void PreparaSaidas() {
    if (!GetConsoleWindow()) AttachConsole(ATTACH_PARENT_PROCESS);
    Abre(kEntrada, STD_INPUT_HANDLE, L"CONIN$");
    Abre(kSaida, STD_OUTPUT_HANDLE, L"CONOUT$");
    Abre(kErros, STD_ERROR_HANDLE, L"CONOUT$");
    for (const int saida : {kSaida, kErros}) _setmode(saida, _O_BINARY);
    saidaAntes = GetConsoleOutputCP();
    SetConsoleOutputCP(CP_UTF8);
    std::cout.rdbuf(new TLinhasInteiras(kSaida));  // for as long as the program runs
    std::cerr.rdbuf(new TLinhasInteiras(kErros));
}

void DevolveConsole() noexcept {
    if (saidaAntes != 0) SetConsoleOutputCP(saidaAntes);
}

namespace {

HANDLE DoFluxo(int fluxo) { return reinterpret_cast<HANDLE>(_get_osfhandle(fluxo)); }

/// Ctrl+C breaks a reading off before its handler, in a thread of its own, has told of it.
void ConfereLeitura(bool leu) {
    constexpr DWORD kPausa = 20;
    for (int vez = 0; !leu && vez < 50 && TInterrupcao::Sinal() == 0; ++vez) Sleep(kPausa);
    TInterrupcao::Confere();
}

}  // namespace

bool EhTerminal(int fluxo) {
    DWORD modo = 0;
    return GetConsoleMode(DoFluxo(fluxo), &modo) != 0;
}

bool SaidaSeReescreve() {
    DWORD modo = 0;
    const HANDLE saida = DoFluxo(kSaida);
    return GetConsoleMode(saida, &modo) && SetConsoleMode(saida, modo | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

std::size_t LarguraDoTerminal() {
    CONSOLE_SCREEN_BUFFER_INFO tela;
    if (!GetConsoleScreenBufferInfo(DoFluxo(kSaida), &tela)) return kLarguraDesconhecida;
    return static_cast<std::size_t>(tela.srWindow.Right - tela.srWindow.Left + 1);
}

std::size_t GravaNoFluxo(int fluxo, std::string_view texto) {
    return static_cast<std::size_t>(std::max(0, _write(fluxo, texto.data(), static_cast<unsigned>(texto.size()))));
}

namespace {

/// As the keys were, whatever the console's character set.
std::string LeDoConsole(DWORD semModos, std::string_view pergunta = {}) {
    const HANDLE entrada = DoFluxo(kEntrada);
    DWORD modo = 0, lidos = 0;
    wchar_t linha[1024];
    GetConsoleMode(entrada, &modo);
    SetConsoleMode(entrada, modo & ~semModos);
    std::cerr << pergunta << std::flush;
    const bool leu = ReadConsoleW(entrada, linha, static_cast<DWORD>(std::size(linha)), &lidos, nullptr) && lidos > 0;
    const DWORD erro = GetLastError();
    SetConsoleMode(entrada, modo);
    ConfereLeitura(leu || erro != ERROR_OPERATION_ABORTED);
    std::wstring texto(linha, leu ? lidos : 0);
    texto.resize(std::min(texto.find_first_of(L"\r\n"), texto.size()));
    return std::filesystem::path(texto).string();
}

}  // namespace

std::string LeLinha() { return EhTerminal(kEntrada) ? LeDoConsole(0) : LeDaEntrada(); }
std::string LeSemEco(std::string_view pergunta) { return LeDoConsole(ENABLE_ECHO_INPUT, pergunta); }

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

bool EhTerminal(int fluxo) { return isatty(fluxo) != 0; }

bool SaidaSeReescreve() {
    const char* tipo = std::getenv("TERM");
    return EhTerminal(kSaida) && !(tipo && std::string_view(tipo) == "dumb");
}

std::size_t LarguraDoTerminal() {
    winsize tela{};
    const bool conhecida = ioctl(kSaida, TIOCGWINSZ, &tela) == 0 && tela.ws_col > 0;
    return conhecida ? tela.ws_col : kLarguraDesconhecida;
}

/// Waits also where the stream was opened not to.
std::size_t GravaNoFluxo(int fluxo, std::string_view texto) {
    for (;;) {
        const ssize_t escritos = write(fluxo, texto.data(), texto.size());
        if (escritos >= 0) return static_cast<std::size_t>(escritos);
        if (errno != EAGAIN && errno != EINTR) return 0;
        pollfd espera{fluxo, POLLOUT, 0};
        poll(&espera, 1, -1);
    }
}

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

std::string LeLinha() {
    EsperaEntrada();
    return LeDaEntrada();
}

std::string LeSemEco(std::string_view pergunta) {
    const TSemEco semEco;
    std::cerr << pergunta << std::flush;
    return LeLinha();
}

#endif

}  // namespace wkd
