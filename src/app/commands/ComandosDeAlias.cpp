#include "commands/ComandosDeAlias.h"

#include <cstdio>
#include <iostream>

#include "firebird/ConexaoFirebird.h"
#include "process/Interrupcao.h"
#include "server/HBNConnection.h"

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

namespace {

TAliases Aliases(const TAmbiente& ambiente) { return TAliases(LocalizaIni(ambiente.locais)); }

/// The settings file, or the place of a new one beside the program.
std::filesystem::path IniParaGravar(const TAmbiente& ambiente) {
    try {
        return LocalizaIni(ambiente.locais);
    } catch (const TErroConfiguracao&) {
        return ambiente.pastaPrograma / "WKD.ini";
    }
}

/// Runs the command; an error goes to standard error and ends in the code for "no connection".
template <class F>
TCodigoDeSaida ComErroNaTela(F&& comando) {
    try {
        comando();
        return TCodigoDeSaida::Sucesso;
    } catch (const std::exception& erro) {
        std::cerr << erro.what() << std::endl;
        return TCodigoDeSaida::SemConexao;
    }
}

}  // namespace

TCodigoDeSaida ListaAliases(const TAmbiente& ambiente) {
    return ComErroNaTela([&] {
        for (const std::string& nome : Aliases(ambiente).ListaAlias(true)) std::cout << nome << '\n';
    });
}

TCodigoDeSaida NovoAlias(const TAmbiente& ambiente, TPedeNovoAlias pedido) {
    return ComErroNaTela([&] {
        const TAliases aliases(IniParaGravar(ambiente));
        pedido.alias.senha = PedeSenha();
        aliases.AdicionaAlias(pedido.alias, pedido.tambemPadrao);
        std::cout << "Alias " << pedido.alias.nome << " gravado em " << aliases.Caminho().string() << '\n';
    });
}

TCodigoDeSaida RemoveAlias(const TAmbiente& ambiente, const TPedeRemoveAlias& pedido) {
    return ComErroNaTela([&] {
        const TAliases aliases = Aliases(ambiente);
        if (!aliases.RemoveAlias(pedido.nome))
            throw TErroConfiguracao("O alias " + pedido.nome + " não existe em " + aliases.Caminho().string() +
                                    ". Veja os nomes com --lista-alias.");
        std::cout << "Alias " << pedido.nome << " apagado de " << aliases.Caminho().string() << '\n';
    });
}

TCodigoDeSaida TestaAlias(const TAmbiente& ambiente, const TPedeTestaAlias& pedido) {
    return ComErroNaTela([&] {
        THBNConnection conexao(Aliases(ambiente));
        conexao.SetAlias(pedido.nome);
        conexao.Open();
        std::cout << "Tipo: " << TipoBancoToStr(conexao.TipoBanco()) << '\n'
                  << "Local: " << conexao.RetornaDadosConexao().Texto() << '\n'
                  << "Servidor: " << conexao.VersaoServidor() << '\n';
        if (conexao.TipoBanco() == TTipoBanco::tbInterbase)
            std::cout << "Cliente: " << VersaoDoClienteFirebird() << '\n';
    });
}

}  // namespace wkd
