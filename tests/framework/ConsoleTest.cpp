// A console as somebody sits at it: keys go in, and what the screen shows comes out. The program on it is this one
// again.
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <iostream>
#include <mutex>
#include <thread>

#include "Arquivos.h"
#include "PastaTemporaria.h"
#include "process/Interrupcao.h"
#include "process/Terminal.h"

namespace wkd {
namespace {

/// Of the system; the headers have it only for those who need at least that Windows.
template <class TFuncao>
TFuncao Funcao(const char* nome) {
    return reinterpret_cast<TFuncao>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), nome)));
}
using TCriaConsole = HRESULT(WINAPI*)(COORD, HANDLE, HANDLE, DWORD, HANDLE*);
using TFechaConsole = void(WINAPI*)(HANDLE);

/// PROC_THREAD_ATTRIBUTE_PSEUDOCONSOLE, which they lack the same way.
constexpr DWORD_PTR kAtributoDoConsole = 0x20016;
constexpr DWORD kPaciencia = 60'000;

class TConsole {
  public:
    /// Runs the part of a child on it, with `relato` as its last argument.
    TConsole(const std::wstring& parte, const std::filesystem::path& relato) {
        HANDLE teclas = nullptr, imagem = nullptr;
        CreatePipe(&teclas, &teclado_, nullptr, 0);
        CreatePipe(&tela_, &imagem, nullptr, 0);
        if (Funcao<TCriaConsole>("CreatePseudoConsole")({80, 25}, teclas, imagem, 0, &console_) != S_OK)
            throw std::runtime_error("no pseudo console");
        for (const HANDLE dele : {teclas, imagem}) CloseHandle(dele);
        Inicia(parte, relato);
        leitor_ = std::jthread([this](const std::stop_token& fim) { Le(fim); });
    }
    ~TConsole() {
        TerminateProcess(processo_, 1);
        Fecha();
        leitor_ = {};
        for (const HANDLE nosso : {teclado_, tela_, processo_}) CloseHandle(nosso);
    }
    TConsole(const TConsole&) = delete;
    TConsole& operator=(const TConsole&) = delete;

    void Digita(std::string_view teclas) {
        DWORD escritos = 0;
        WriteFile(teclado_, teclas.data(), static_cast<DWORD>(teclas.size()), &escritos, nullptr);
    }
    void Fecha() {
        if (console_) Funcao<TFechaConsole>("ClosePseudoConsole")(std::exchange(console_, nullptr));
    }
    bool Mostrou(std::string_view texto) const {
        const std::lock_guard trava(guarda_);
        return mostrado_.find(texto) != std::string::npos;
    }
    testing::AssertionResult EsperaMostrar(std::string_view texto) const {
        const auto limite = GetTickCount64() + kPaciencia;
        while (!Mostrou(texto) && GetTickCount64() < limite) Sleep(20);
        if (Mostrou(texto)) return testing::AssertionSuccess();
        return testing::AssertionFailure() << texto << " is not in: " << mostrado_;
    }
    /// Exit code; -1 when the program does not end.
    int Espera() const {
        DWORD codigo = 0;
        const bool terminou = WaitForSingleObject(processo_, kPaciencia) == WAIT_OBJECT_0;
        return terminou && GetExitCodeProcess(processo_, &codigo) ? static_cast<int>(codigo) : -1;
    }

  private:
    /// Nobody leads its streams, as with a window program started from a console.
    void Inicia(const std::wstring& parte, const std::filesystem::path& relato) {
        SIZE_T tamanho = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &tamanho);
        std::string lugar(tamanho, '\0');
        STARTUPINFOEXW inicio{};
        inicio.StartupInfo.cb = sizeof inicio;
        inicio.lpAttributeList = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(lugar.data());
        InitializeProcThreadAttributeList(inicio.lpAttributeList, 1, 0, &tamanho);
        UpdateProcThreadAttribute(inicio.lpAttributeList, 0, kAtributoDoConsole, console_, sizeof console_, nullptr,
                                  nullptr);
        inicio.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
        std::wstring programa(32768, L'\0');
        programa.resize(GetModuleFileNameW(nullptr, programa.data(), static_cast<DWORD>(programa.size())));
        std::wstring linha = L"filho --gtest_also_run_disabled_tests --gtest_filter=DISABLED_FilhoDoConsole." + parte +
                             L" \"" + relato.wstring() + L"\"";
        PROCESS_INFORMATION feito{};
        if (!CreateProcessW(programa.c_str(), linha.data(), nullptr, nullptr, FALSE, EXTENDED_STARTUPINFO_PRESENT,
                            nullptr, nullptr, &inicio.StartupInfo, &feito))
            throw std::runtime_error("no process");
        CloseHandle(feito.hThread);
        processo_ = feito.hProcess;
    }

    /// Somebody else may have the other end still open, so its end is not waited for.
    void Le(const std::stop_token& fim) {
        char bytes[512];
        DWORD ha = 0;
        while (!fim.stop_requested() && PeekNamedPipe(tela_, nullptr, 0, nullptr, &ha, nullptr)) {
            DWORD lidos = 0;
            if (ha > 0) ReadFile(tela_, bytes, std::min<DWORD>(ha, sizeof bytes), &lidos, nullptr);
            if (lidos == 0) Sleep(10);
            const std::lock_guard trava(guarda_);
            for (const char byte : std::string_view(bytes, lidos)) Mostra(byte);
        }
    }

    /// What moves and hides the cursor is left out.
    void Mostra(char byte) {
        if (byte == '\x1b') comando_ = true;
        if (!comando_) mostrado_ += byte;
        if (std::isalpha(static_cast<unsigned char>(byte))) comando_ = false;
    }

    HANDLE console_ = nullptr, teclado_ = nullptr, tela_ = nullptr, processo_ = nullptr;
    std::jthread leitor_;
    mutable std::mutex guarda_;
    std::string mostrado_;  // behind guarda_
    bool comando_ = false;
};

std::string Modo() {
    DWORD modo = 0;
    GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &modo);
    return std::to_string(modo);
}

/// What a child does on the console; what it returns goes into the file that its last argument names.
void SerFilho(std::string (*parte)()) {
    const std::filesystem::path relato = ArgumentosDoPrograma(0, nullptr).back();
    PreparaSaidas();
    TInterrupcao::AtendeSinais({});
    try {
        EscreveArquivo(relato, parte());
    } catch (const TInterrompida&) {
        EscreveArquivo(relato, "interrompida");
    }
    const int sinal = TInterrupcao::Sinal();
    EncerraProcesso(sinal == 0 ? TCodigoDeSaida::Sucesso : CodigoDoSinal(sinal));
}

TEST(DISABLED_FilhoDoConsole, Responde) {
    SerFilho([] {
        const std::string antes = Modo();
        std::cout << "Usu\xC3\xA1rio: " << std::flush;
        const std::string nome = LeLinha();
        const std::string senha = LeSemEco("Senha: ");
        const bool terminal = EhTerminal(kEntrada) && EhTerminal(kSaida) && EhTerminal(kErros) && SaidaSeReescreve();
        return nome + "|" + senha + "|" + std::to_string(LarguraDoTerminal()) + (terminal ? "" : "|no terminal") +
               (Modo() == antes ? "" : "|another mode");
    });
}

TEST(DISABLED_FilhoDoConsole, Trabalha) {
    SerFilho([] {
        GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);  // as the console does it for the key
        for (int vez = 0; vez < 500 && TInterrupcao::Sinal() == 0; ++vez) Sleep(20);
        return "sinal " + std::to_string(TInterrupcao::Sinal());
    });
}

class ConsoleTest : public testing::Test {
  protected:
    TPastaTemporaria pasta_;
    const std::filesystem::path relato_ = pasta_ / "relat\xC3\xB3rio da \xC3\xA7\xC3\xA3o \xE2\x82\xAC.txt";
};

TEST_F(ConsoleTest, WhatIsTypedArrivesAndThePasswordIsNotShown) {
    TConsole console(L"Responde", relato_);
    ASSERT_TRUE(console.EsperaMostrar("rio:"));
    EXPECT_TRUE(console.Mostrou("Usu\xC3\xA1rio:"));
    console.Digita("Jo\xC3\xA3o\r");
    ASSERT_TRUE(console.EsperaMostrar("Senha:"));
    EXPECT_TRUE(console.Mostrou("Jo\xC3\xA3o"));
    console.Digita("\xC3\xA7zq\xE2\x82\xAC\r");
    EXPECT_EQ(console.Espera(), 0);
    EXPECT_EQ(LeArquivo(relato_), "Jo\xC3\xA3o|\xC3\xA7zq\xE2\x82\xAC|80");
    for (const char* letra : {"z", "q", "\xC3\xA7", "\xE2\x82\xAC"}) EXPECT_FALSE(console.Mostrou(letra)) << letra;
}

TEST_F(ConsoleTest, CtrlCReachesWhoWorks) {
    const TConsole console(L"Trabalha", relato_);
    EXPECT_EQ(console.Espera(), 128 + SIGINT);
    EXPECT_EQ(LeArquivo(relato_), "sinal 2");
}

}  // namespace
}  // namespace wkd
