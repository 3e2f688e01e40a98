#include "commands/Comandos.h"

#include <iostream>

#include "commands/PreencheDados.h"
#include "firebird/ConexaoFirebird.h"
#include "process/Terminal.h"
#include "server/HBNConnection.h"

namespace wkd {

std::string PedeSenha() {
    if (!EhTerminal(kEntrada)) return LeLinha();
    std::cerr << "Senha: " << std::flush;
    std::string senha = LeSemEco();
    std::cerr << std::endl;
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
        std::cerr << ExplicaConexao(ErroDe(erro)) << std::endl;
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
