#include <clocale>
#include <iostream>

#include "Comandos.h"
#include "process/Interrupcao.h"
#include "process/Terminal.h"

namespace {

using namespace wkd;

TCodigoDeSaida Atende(const std::vector<std::string>& argumentos) {
    try {
        TInterrupcao::AtendeSinais({});
        return ExecutaPedido(LePedidoDoPacote(argumentos), LocaisPadraoDoIni(), std::cout, std::cerr);
    } catch (const std::exception& erro) {
        std::cerr << erro.what() << std::endl;
        return TCodigoDeSaida::Encerrada;
    } catch (const TInterrompida&) {
        std::cerr << "Interrompido: nenhum pacote foi gravado." << std::endl;
        return CodigoDoSinal(TInterrupcao::Sinal());
    }
}

}  // namespace

int main(int argc, char** argv) {
    PreparaSaidas();
    std::setlocale(LC_CTYPE, "C.UTF-8");  // the client library reads path names with it
    EncerraProcesso(Atende(ArgumentosDoPrograma(argc, argv)));
}
