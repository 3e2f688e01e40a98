#include "Programa.h"

#include <sys/wait.h>

#include <cstdlib>

#include "Arquivos.h"

namespace wkd {

namespace {

std::string Aspas(const std::string& argumento) {
    std::string texto = "'";
    for (const char c : argumento) texto += c == '\'' ? "'\\''" : std::string(1, c);
    return texto + "'";
}

}  // namespace

TSaidaDePrograma RodaPrograma(const std::filesystem::path& programa, const std::vector<std::string>& argumentos,
                              const std::filesystem::path& pasta, std::string_view entrada) {
    EscreveArquivo(pasta / "entrada.txt", entrada);
    std::string comando = "cd " + Aspas(pasta.string()) + " && TMPDIR=tmp " + Aspas(programa.string());
    for (const std::string& argumento : argumentos) comando += " " + Aspas(argumento);
    const int estado = std::system((comando + " <entrada.txt >saida.txt 2>erros.txt").c_str());
    return {WIFEXITED(estado) ? WEXITSTATUS(estado) : -1, LeArquivo(pasta / "saida.txt"),
            LeArquivo(pasta / "erros.txt")};
}

}  // namespace wkd
