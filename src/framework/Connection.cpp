#include "Connection.h"

#include <stdexcept>

#include "Texto.h"

namespace wkd {

void TComando::Atribui(std::string_view parametro, const TValor& valor) {
    const auto& nomes = Parametros();
    for (std::size_t i = 0; i < nomes.size(); ++i)
        if (IgualSemCaixa(nomes[i], parametro)) return Atribui(i, valor);
    throw std::invalid_argument("o comando não tem o parâmetro " + std::string(parametro));
}

}  // namespace wkd
