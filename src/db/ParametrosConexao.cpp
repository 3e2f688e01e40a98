#include "ParametrosConexao.h"

#include "Texto.h"

namespace wkd {

std::string TParametrosConexao::Valor(std::string_view chave) const {
    for (const auto& [nome, valor] : pares_)
        if (IgualSemCaixa(nome, chave)) return valor;
    return {};
}

}  // namespace wkd
