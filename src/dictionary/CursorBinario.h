#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "FontePacote.h"

namespace wkd {

/// Walks over the bytes of a binary packet; little-endian, nothing aligned. A read past the end throws TErroTrecho.
class TCursorBinario {
  public:
    explicit TCursorBinario(std::string_view bytes) : inicio_(bytes.data()), resto_(bytes) {}

    std::string_view Bytes(std::uint64_t quantos) {
        if (quantos > resto_.size()) Falta(quantos);
        const auto lidos = resto_.substr(0, static_cast<std::size_t>(quantos));
        resto_.remove_prefix(lidos.size());
        return lidos;
    }
    /// Unsigned number of 1 to 8 bytes.
    std::uint64_t Numero(std::size_t bytes) {
        std::uint64_t numero = 0;
        int desloca = 0;
        for (const char byte : Bytes(bytes)) {
            numero |= static_cast<std::uint64_t>(static_cast<unsigned char>(byte)) << desloca;
            desloca += 8;
        }
        return numero;
    }
    std::uint8_t U8() { return static_cast<std::uint8_t>(Numero(1)); }
    std::uint16_t U16() { return static_cast<std::uint16_t>(Numero(2)); }
    std::uint32_t U32() { return static_cast<std::uint32_t>(Numero(4)); }

    const char* Onde() const { return resto_.data(); }
    std::size_t Posicao() const { return static_cast<std::size_t>(resto_.data() - inicio_); }
    std::size_t Resta() const { return resto_.size(); }

  private:
    [[noreturn]] void Falta(std::uint64_t quantos) const {
        throw TErroTrecho{Onde(), "o arquivo termina antes do esperado (são precisos mais " + std::to_string(quantos) +
                                      " bytes, restam " + std::to_string(resto_.size()) + ")"};
    }

    const char* inicio_;
    std::string_view resto_;
};

}  // namespace wkd
