// The progress line of an unattended run, seen through a pseudo-terminal.
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

#include "ProgramaApoio.h"
#include "aliases/Aliases.h"
#include "rows/WKDQuery.h"
#include "values/Texto.h"

namespace wkd {
namespace {

constexpr unsigned short kColunas = 70;

/// Runs the program on a terminal, where a person types this, and returns all that reached it.
std::string RodaNoTerminal(const TProgramaInstalado& loja, std::vector<std::string> argumentos,
                           const std::string& digitado, int& codigo) {
    std::vector<char*> argv;
    argumentos.insert(argumentos.begin(), "AtualizaWKD");
    for (std::string& argumento : argumentos) argv.push_back(argumento.data());
    argv.push_back(nullptr);
    const winsize tamanho{24, kColunas, 0, 0};
    int terminal = -1;
    const pid_t filho = forkpty(&terminal, nullptr, nullptr, &tamanho);
    if (filho == 0) {
        if (chdir((loja / "").c_str()) != 0) _exit(126);
        setenv("TMPDIR", "tmp", 1);
        setenv("TERM", "xterm", 1);
        execv("./AtualizaWKD", argv.data());
        _exit(127);
    }
    std::string saida;
    char bytes[4096];
    std::size_t perguntas = 0;
    const auto espera = [&] {  // who says nothing for so long waits for what nobody types
        pollfd mudo{terminal, POLLIN, 0};
        if (poll(&mudo, 1, 120'000) == 0) kill(filho, SIGKILL);
        return true;
    };
    for (ssize_t lidos; espera() && (lidos = read(terminal, bytes, sizeof bytes)) > 0;) {
        saida.append(bytes, static_cast<std::size_t>(lidos));
        if (!saida.ends_with(": ") || digitado.empty()) continue;
        const std::string linha = Divide(digitado, '|').at(perguntas++) + "\n";
        if (write(terminal, linha.data(), linha.size()) < 0) break;
    }
    close(terminal);
    int estado = -1;
    waitpid(filho, &estado, 0);
    codigo = WIFEXITED(estado) ? WEXITSTATUS(estado) : -1;
    return saida;
}

/// The lines that are left on the screen once everything has been written.
std::vector<std::string> Tela(const std::string& saida) {
    std::vector<std::string> linhas(1);
    for (std::size_t i = 0; i < saida.size(); ++i) {
        if (saida.compare(i, 4, "\r\x1b[K") == 0) {
            linhas.back().clear();
            i += 3;
        } else if (saida[i] == '\n') {
            linhas.emplace_back();
        } else if (saida[i] != '\r') {
            linhas.back() += saida[i];
        }
    }
    return linhas;
}

TEST(Terminal, ShowsALineOfProgressAndTakesItAwayAtTheEnd) {
    const TProgramaInstalado loja;
    {
        const auto banco = loja.Banco();
        TTransacao transacao(*banco);
        TWKDQuery insere(*banco, "insert into TCONTAS_REC (DOCUMENTO, PARCELA) values ('X', :parcela)");
        for (int i = 0; i < 60'000; ++i) insere.Param("parcela", i).ExecSQL();
        transacao.Commit();
    }
    int codigo = -1;
    const std::string saida = RodaNoTerminal(loja, {"LOJA;", "pacote.zip"}, "", codigo);
    EXPECT_EQ(codigo, 0) << saida;

    const std::size_t total = saida.find(" de 60.");
    ASSERT_NE(total, std::string::npos) << saida;
    const std::size_t inicio = saida.rfind('\r', total);
    const std::string linha = saida.substr(inicio, saida.find('\r', total) - inicio);
    EXPECT_TRUE(linha.starts_with("\r\x1b[KTabela 12 de 14 | ")) << linha;
    EXPECT_NE(linha.find("%)"), std::string::npos) << linha;
    EXPECT_LE(linha.size(), kColunas + 5) << linha;  // the "…" and what erases the line are not on the screen

    const auto tela = Tela(saida);
    for (const auto& restou : tela) EXPECT_FALSE(restou.starts_with("Tabela 12 de")) << restou;
    EXPECT_NE(std::ranges::find(tela, "Atualizou o arquivo: TCONTAS_REC"), tela.end());
    EXPECT_TRUE(tela[tela.size() - 2].starts_with("Tempo de Atualização: ")) << saida;
    EXPECT_EQ(tela.back(), "");
}

TEST(Terminal, ANewPasswordIsAskedForTwiceAndNotShown) {
    const TProgramaInstalado loja;
    int codigo = -1;
    std::string saida = RodaNoTerminal(loja, {"--muda-senha", "LOJA"}, "nova|outra", codigo);
    EXPECT_EQ(codigo, 64) << saida;
    EXPECT_NE(saida.find("não são iguais"), std::string::npos) << saida;
    EXPECT_NE(TAliases(loja / "WKD.ini").CarregaAlias("LOJA").senha, "nova");
    saida = RodaNoTerminal(loja, {"--muda-senha", "LOJA"}, "nova|nova", codigo);
    EXPECT_EQ(codigo, 0) << saida;
    EXPECT_EQ(saida.find("nova"), std::string::npos) << saida;
    EXPECT_EQ(TAliases(loja / "WKD.ini").CarregaAlias("LOJA").senha, "nova");
}

TEST(Terminal, WithoutATerminalNothingOfItAppears) {
    const TProgramaInstalado loja;
    const auto saida = loja.Atualiza();
    EXPECT_EQ(saida.saida.find_first_of("\r\x1b"), std::string::npos) << saida.saida;
    EXPECT_FALSE(saida.Diz("Tabela 12 de 14"));
}

}  // namespace
}  // namespace wkd
