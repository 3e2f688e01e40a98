#include <clocale>
#include <csignal>
#include <iostream>

#include "Ambiente.h"
#include "CodigoDeSaida.h"
#include "ComandosDeAlias.h"
#include "Desassistida.h"
#include "LinhaDeComando.h"
#include "Versao.h"

namespace {

using namespace wkd;

TCodigoDeSaida Atende(const TPedeAjuda&) {
    std::cout << TextoDeAjuda();
    return TCodigoDeSaida::Sucesso;
}

TCodigoDeSaida Atende(const TPedeVersao&) {
    std::cout << "AtualizaWKD " << kVersao << '\n';
    return TCodigoDeSaida::Sucesso;
}

TCodigoDeSaida Atende(const TPedeListaAlias&) { return ListaAliases(AmbientePadrao()); }
TCodigoDeSaida Atende(const TPedeNovoAlias& pedido) { return NovoAlias(AmbientePadrao(), pedido); }
TCodigoDeSaida Atende(const TPedeRemoveAlias& pedido) { return RemoveAlias(AmbientePadrao(), pedido); }
TCodigoDeSaida Atende(const TPedeTestaAlias& pedido) { return TestaAlias(AmbientePadrao(), pedido); }
TCodigoDeSaida Atende(const TPedeAtualizacao& pedido) { return AtualizaDesassistida(AmbientePadrao(), pedido); }

TCodigoDeSaida Atende(const TUsoIncorreto& pedido) {
    std::cerr << pedido.mensagem << "\nVeja AtualizaWKD --help." << std::endl;
    return TCodigoDeSaida::UsoIncorreto;
}

TCodigoDeSaida Atende(const TPedeJanela&) {
    std::cerr << "Informe alias e pacote: AtualizaWKD \"ALIAS;\" PACOTE.zip\nVeja AtualizaWKD --help." << std::endl;
    return TCodigoDeSaida::UsoIncorreto;
}

}  // namespace

int main(int argc, char** argv) {
    std::setlocale(LC_CTYPE, "C.UTF-8");  // the client library reads path names with it
#ifndef _WIN32
    std::signal(SIGPIPE, SIG_IGN);  // neither a broken pipe nor a closed terminal ends an update
    std::signal(SIGHUP, SIG_IGN);
#endif
    const std::vector<std::string> argumentos(argv + 1, argv + argc);
    return static_cast<int>(
        std::visit([](const auto& pedido) { return Atende(pedido); }, LeLinhaDeComando(argumentos)));
}
