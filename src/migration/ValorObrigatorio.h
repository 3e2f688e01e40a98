#pragma once

#include <string>
#include <string_view>

#include "Texto.h"
#include "Valor.h"

namespace wkd {

/// What a required column gets when its value is missing: date and time when it is named "DATA" or "DT...", else "0".
inline TValor ValorObrigatorio(std::string_view coluna) {
    const std::string nome = Maiusculas(coluna);
    return nome == "DATA" || nome.starts_with("DT") ? TValor(Agora()) : TValor("0");
}

}  // namespace wkd
