#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "packet/FontePacote.h"
#include "values/Campo.h"

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
        static_assert(std::endian::native == std::endian::little);
        std::uint64_t numero = 0;
        std::memcpy(&numero, Bytes(bytes).data(), bytes);
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

/// Change log of a binary packet: which row a row supersedes, and the values it takes over from it. Rows are
/// numbered from 0.
class THistoricoBinario {
  public:
    /// Takes the (row, predecessor, kind) triples of CHANGE_LOG, whatever their width.
    void Carrega(const TPropriedade& registro);
    bool TemAnterior(std::uint32_t linha) const { return anteriores_.contains(linha); }
    /// The field of that row is "not changed".
    void Pendente(std::uint32_t linha, std::uint16_t campo) { pendentes_[linha].push_back(campo); }
    /// Fills the pending fields from the predecessors, through as many of them as it takes; NULL when there is none.
    void Completa(std::vector<TLinha>& linhas, TOrcamento& orcamento, const char* onde);

  private:
    using TCampos = std::vector<std::uint16_t>;

    void Completa(std::uint32_t linha, std::vector<TLinha>& linhas, TOrcamento& orcamento, const char* onde);

    std::unordered_map<std::uint32_t, std::uint32_t> anteriores_;
    std::unordered_map<std::uint32_t, TCampos> pendentes_;
};

}  // namespace wkd
