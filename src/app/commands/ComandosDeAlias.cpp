#include "commands/Comandos.h"

#include <iostream>
#include <stdexcept>

#include "commands/PreencheDados.h"
#include "firebird/ConexaoFirebird.h"
#include "process/Terminal.h"
#include "server/HBNConnection.h"

namespace wkd {

namespace {

std::string PedeSenha(const char* rotulo) {
    std::string senha = LeSemEco(rotulo);
    std::cerr << std::endl;
    return senha;
}

}  // namespace

std::string PedeSenhaNova() {
    if (!EhTerminal(kEntrada)) return LeLinha();
    std::string senha = PedeSenha("Senha: ");
    if (senha == PedeSenha("Senha de novo: ")) return senha;
    throw std::invalid_argument("As duas senhas não são iguais: nada foi gravado. Repita o comando.");
}

std::filesystem::path IniParaGravar(const TAmbiente& ambiente) {
    try {
        return LocalizaIni(ambiente.locais);
    } catch (const TErroConfiguracao&) {
        return ambiente.pastaPrograma / "WKD.ini";
    }
}

namespace {

TAliases Aliases(const TAmbiente& ambiente) { return TAliases(LocalizaIni(ambiente.locais)); }

/// Runs the command; an error goes to standard error and ends in the code for "no connection", or that for arguments.
template <class F>
TCodigoDeSaida ComErroNaTela(F&& comando) {
    try {
        comando();
        return TCodigoDeSaida::Sucesso;
    } catch (const std::invalid_argument& erro) {
        std::cerr << erro.what() << std::endl;
        return TCodigoDeSaida::UsoIncorreto;
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

namespace {

void ExigeConexao(const TAlias& alias) {
    try {
        std::cout << "Conectou: " << ProvaAlias(alias, [] { return false; }) << '\n';
    } catch (const TErroConhecido& erro) {
        TErro comSaida = erro.Dados();
        comSaida.mensagem += "\nNada foi gravado; --sem-teste grava assim mesmo.";
        throw TErroConhecido(std::move(comSaida));
    }
}

}  // namespace

TCodigoDeSaida NovoAlias(const TAmbiente& ambiente, TPedeNovoAlias pedido) {
    return ComErroNaTela([&] {
        const TAliases aliases(IniParaGravar(ambiente));
        if (!pedido.troca && aliases.ExisteAlias(pedido.alias.nome))
            throw std::invalid_argument("O alias " + pedido.alias.nome + " já existe em " + aliases.Caminho().string() +
                                        ". Para gravar por cima, use --troca; para mudar só a senha, --muda-senha.");
        pedido.alias.senha = PedeSenhaNova();
        if (pedido.prova) ExigeConexao(pedido.alias);
        aliases.AdicionaAlias(pedido.alias, pedido.tambemPadrao);
        std::cout << "Alias " << pedido.alias.nome << " gravado em " << aliases.Caminho().string() << '\n';
    });
}

TCodigoDeSaida MudaSenha(const TAmbiente& ambiente, const TPedeMudaSenha& pedido) {
    return ComErroNaTela([&] {
        const TAliases aliases = Aliases(ambiente);
        TAlias alias = aliases.CarregaAlias(pedido.nome);
        alias.senha = PedeSenhaNova();
        if (pedido.prova) ExigeConexao(alias);
        aliases.MudaSenha(pedido.nome, alias.senha);
        std::cout << "Senha do alias " << pedido.nome << " trocada em " << aliases.Caminho().string() << '\n';
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
