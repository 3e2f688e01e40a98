#include <clocale>
#include <csignal>
#include <iostream>
#include <variant>

#include "commands/Comandos.h"
#include "commands/Eco.h"
#include "commands/LinhaDeComando.h"
#include "commands/Preferencias.h"
#include "firebird/ConexaoFirebird.h"
#include "process/Interrupcao.h"
#include "process/Programa.h"
#include "process/Terminal.h"
#include "window/Assistente.h"

namespace {

using namespace wkd;

struct TPrograma {
    int argc;
    char** argv;

    TCodigoDeSaida operator()(const TPedeAjuda&) const {
        std::cout << TextoDeAjuda();
        return TCodigoDeSaida::Sucesso;
    }
    TCodigoDeSaida operator()(const TPedeVersao&) const {
        const std::string cliente = VersaoDoClienteFirebird();
        std::cout << "AtualizaWKD " << kVersao << "\nCliente do Firebird: "
                  << (cliente.empty() ? "não encontrado; faz falta aos aliases tbInterbase" : cliente) << '\n';
        return TCodigoDeSaida::Sucesso;
    }
    TCodigoDeSaida operator()(const TPedeListaAlias&) const { return ListaAliases(AmbientePadrao()); }
    TCodigoDeSaida operator()(const TPedeNovoAlias& pedido) const { return NovoAlias(AmbientePadrao(), pedido); }
    TCodigoDeSaida operator()(const TPedeMudaSenha& pedido) const { return MudaSenha(AmbientePadrao(), pedido); }
    TCodigoDeSaida operator()(const TPedeRemoveAlias& pedido) const { return RemoveAlias(AmbientePadrao(), pedido); }
    TCodigoDeSaida operator()(const TPedeTestaAlias& pedido) const { return TestaAlias(AmbientePadrao(), pedido); }
    TCodigoDeSaida operator()(const TPedePlano& pedido) const { return MostraPlano(AmbientePadrao(), pedido); }
    TCodigoDeSaida operator()(const TPedeConfere& pedido) const { return MostraDesvios(AmbientePadrao(), pedido); }
    TCodigoDeSaida operator()(const TPedeHistorico& pedido) const { return MostraHistorico(AmbientePadrao(), pedido); }
    TCodigoDeSaida operator()(const TPedeBackup& pedido) const { return ComandoBackup(AmbientePadrao(), pedido); }
    TCodigoDeSaida operator()(const TPedeProva& pedido) const { return ComandoProva(AmbientePadrao(), pedido); }
    TCodigoDeSaida operator()(const TPedeRestaura& pedido) const { return ComandoRestaura(AmbientePadrao(), pedido); }
    TCodigoDeSaida operator()(const TPedeEnsaio& pedido) const { return ComandoEnsaio(AmbientePadrao(), pedido); }
    TCodigoDeSaida operator()(const TPedeRepoe& pedido) const { return ComandoRepoe(AmbientePadrao(), pedido); }
    TCodigoDeSaida operator()(const TPedeSuporte& pedido) const { return ComandoSuporte(AmbientePadrao(), pedido); }
    TCodigoDeSaida operator()(const TPedeReproduz& pedido) const { return ComandoReproduz(AmbientePadrao(), pedido); }
    TCodigoDeSaida operator()(const TPedeJanela& pedido) { return Abre({.primeiro = pedido.argumento, .pacote = {}}); }
    TCodigoDeSaida operator()(const TPedeAtualizacao& pedido) {
        if (!TemAsTabelas(AmbientePadrao(), pedido.pacote, pedido.escolhas)) return TCodigoDeSaida::Encerrada;
        return Abre({pedido.alias + ";", pedido.pacote, pedido.comBackup, pedido.silencioso, pedido.escolhas});
    }
    TCodigoDeSaida operator()(const TUsoIncorreto& pedido) const {
        std::cerr << pedido.mensagem << "\nVeja AtualizaWKD --help." << std::endl;
        return TCodigoDeSaida::UsoIncorreto;
    }

  private:
    TCodigoDeSaida Abre(const TInicio& inicio) { return AbreAssistente(argc, argv, AmbientePadrao(), inicio); }
};

template <class... T>
bool EhUm(const TPedido& pedido) {
    return (std::holds_alternative<T>(pedido) || ...);
}

/// Only what writes has something to finish, or to take away.
TInterrupcao::TPrazos PrazosDo(const TPedido& pedido) {
    using namespace std::chrono_literals;
    const bool escreve = EhUm<TPedeAtualizacao, TPedeJanela, TPedeBackup, TPedeProva, TPedeRestaura, TPedeEnsaio,
                              TPedeRepoe, TPedeSuporte, TPedeReproduz>(pedido);
    return escreve ? TInterrupcao::TPrazos() : TInterrupcao::TPrazos{0ms, 500ms, 1500ms};
}

TCodigoDeSaida Atende(int argc, char** argv) {
    try {
        const TPedido pedido = LeLinhaDeComando(ArgumentosDoPrograma(argc, argv));
        TInterrupcao::AtendeSinais(PrazosDo(pedido));
        return std::visit(TPrograma{argc, argv}, pedido);
    } catch (const std::exception& erro) {
        EscreveNosErros(erro.what());
        return TCodigoDeSaida::SemConexao;
    } catch (const TInterrompida&) {
        EscreveNosErros("Interrompido.");
        return CodigoDoSinal(TInterrupcao::Sinal());
    }
}

}  // namespace

int main(int argc, char** argv) {
    PreparaSaidas();
    std::setlocale(LC_CTYPE, "C.UTF-8");  // the client library reads path names with it
#ifndef _WIN32
    std::signal(SIGPIPE, SIG_IGN);  // neither a broken pipe nor a closed terminal ends an update
    std::signal(SIGHUP, SIG_IGN);
#endif
    const TCodigoDeSaida codigo = Atende(argc, argv);
    EsperaSaidas();
    EncerraProcesso(codigo);
}
