#include <clocale>
#include <iostream>

#include "Comandos.h"

int main(int argc, char** argv) {
    std::setlocale(LC_CTYPE, "C.UTF-8");  // the client library reads path names with it
    try {
        const std::vector<std::string> argumentos(argv + 1, argv + argc);
        return static_cast<int>(
            wkd::ExecutaPedido(wkd::LePedidoDoPacote(argumentos), wkd::LocaisPadraoDoIni(), std::cout, std::cerr));
    } catch (const std::exception& erro) {
        std::cerr << erro.what() << std::endl;
        return static_cast<int>(wkd::TCodigoDeSaida::Encerrada);
    }
}
