// AtualizaWKD.com, which a command line finds before AtualizaWKD.exe: the command line does not wait for a window
// program, nor does it know its exit code. This one starts it with the same arguments, waits, and hands the code on.
#include <windows.h>
#include <cstdio>
#include <string>

namespace {

/// Ctrl+C reaches the program, too, which ends in order; its code is waited for.
BOOL WINAPI Ignora(DWORD) { return TRUE; }

std::wstring Programa() {
    std::wstring nome(32768, L'\0');
    nome.resize(GetModuleFileNameW(nullptr, nome.data(), static_cast<DWORD>(nome.size())));
    return nome.replace(nome.rfind(L'.'), std::wstring::npos, L".exe");
}

}  // namespace

int main() {
    constexpr int kSemPrograma = 64;
    constexpr DWORD kPedeElevacao = 740;  // ERROR_ELEVATION_REQUIRED, which the headers lack
    const std::wstring programa = Programa();
    std::wstring linha = GetCommandLineW();
    STARTUPINFOW inicio{};
    inicio.cb = sizeof inicio;
    inicio.dwFlags = STARTF_USESTDHANDLES;
    inicio.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    inicio.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
    inicio.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION processo{};
    SetConsoleCtrlHandler(Ignora, TRUE);
    if (!CreateProcessW(programa.c_str(), linha.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &inicio,
                        &processo)) {
        std::fputs(GetLastError() == kPedeElevacao
                       ? "Rode este comando num prompt aberto como administrador: o programa grava na sua pasta.\n"
                       : "O AtualizaWKD.exe desta pasta nao pode ser iniciado. Instale o programa de novo.\n",
                   stderr);
        return kSemPrograma;
    }
    WaitForSingleObject(processo.hProcess, INFINITE);
    DWORD codigo = kSemPrograma;
    GetExitCodeProcess(processo.hProcess, &codigo);
    return static_cast<int>(codigo);
}
