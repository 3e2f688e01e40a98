#include "values/Base64.h"

#include <cstdint>

namespace wkd {

std::string ParaBase64(std::string_view bytes) {
    std::string texto;
    texto.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const auto parte = bytes.substr(i, 3);
        std::uint32_t grupo = 0;
        for (std::size_t j = 0; j < 3; ++j)
            grupo = grupo << 8 | (j < parte.size() ? static_cast<unsigned char>(parte[j]) : 0u);
        for (std::size_t j = 0; j < 4; ++j)
            texto += j <= parte.size() ? kSinaisDoBase64[grupo >> (18 - 6 * j) & 63] : '=';
    }
    return texto;
}

void ParaBase64(const TConteudo& conteudo, const std::function<void(std::string_view)>& recebe) {
    const auto leitor = conteudo.Abre();
    char bloco[16384];
    std::string resto;  // what is left over of a group of three bytes
    while (const auto lidos = leitor->Le(bloco)) {
        resto.append(bloco, lidos);
        const auto inteiros = resto.size() / 3 * 3;
        recebe(ParaBase64(std::string_view(resto).substr(0, inteiros)));
        resto.erase(0, inteiros);
    }
    recebe(ParaBase64(resto));
}

}  // namespace wkd
