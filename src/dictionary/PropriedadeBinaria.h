#pragma once

#include <cstdint>
#include <string_view>

#include "CursorBinario.h"

namespace wkd {

/// Property of a field or of a packet, in the binary form.
struct TPropriedade {
    std::string_view nome;
    std::uint16_t tamanho = 0;  // of a value or of an element
    bool matriz = false;
    std::string_view dados;

    /// Element of an array, or the only value (position 0); 0 past the end.
    std::uint64_t Numero(std::size_t posicao = 0) const;
    std::size_t Elementos() const { return tamanho == 0 ? 0 : dados.size() / tamanho; }
    /// Text without its trailing NUL.
    std::string_view Texto() const { return dados.substr(0, dados.find('\0')); }
};

/// Throws TErroTrecho.
TPropriedade LePropriedade(TCursorBinario& cursor);

}  // namespace wkd
