#pragma once

#include <cstdint>
#include <string_view>

#include "values/Valor.h"

namespace wkd {

/// FNV-1a, mixed once more so that sums of it say something.
class THash {
  public:
    void Soma(std::string_view bytes) {
        for (const char c : bytes) hash_ = (hash_ ^ static_cast<unsigned char>(c)) * 0x100000001b3;
    }
    void Soma(std::uint64_t numero) {
        for (int i = 0; i < 8; ++i) hash_ = (hash_ ^ (numero >> 8 * i & 0xFF)) * 0x100000001b3;
    }
    std::uint64_t Valor() const { return (hash_ ^ (hash_ >> 29)) * 0xbf58476d1ce4e5b9; }

  private:
    std::uint64_t hash_ = 0xcbf29ce484222325;
};

/// Hash of the bytes of a text or a blob, which is read in pieces; `tamanho` becomes their number.
std::uint64_t HashDosBytes(const TValor& valor, std::size_t& tamanho);

/// Adds a value of any kind to the hash of its row. Equal values of one kind add the same.
void SomaValor(THash& hash, const TValor& valor);

}  // namespace wkd
