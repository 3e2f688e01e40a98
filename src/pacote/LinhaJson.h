#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <unordered_map>

#include "packet/DataPacket.h"

namespace wkd {

/// Rows of a packet, one after the other, their values by field name in any letter case. A field that the packet lacks
/// is NULL in every row.
class TLinhasNomeadas {
  public:
    explicit TLinhasNomeadas(TDataPacket pacote);

    /// Sorts the rows that are still to come by these fields; rows equal in them keep their order.
    void Ordena(std::initializer_list<std::string_view> campos);
    bool Proxima() { return ++atual_ <= pacote_.linhas.size(); }

    const TValor& Valor(std::string_view campo) const;
    /// Without blanks at either end.
    std::string Texto(std::string_view campo) const;
    /// 0 for what is no number.
    std::int64_t Inteiro(std::string_view campo) const;

  private:
    const TValor& Valor(const TLinha& linha, std::string_view campo) const;

    TDataPacket pacote_;
    std::unordered_map<std::string, std::size_t> posicoes_;  // by name in capitals
    std::size_t atual_ = 0;                                  // from 1
};

/// Value of a row's key. Numbers keep the digits of the file.
struct TItemJson {
    enum TForma { Nulo, Logico, Numero, Texto, Base64 } forma = Nulo;
    std::string texto;  // "true", digits, text or Base64
};

/// Walks over the keys of a line; the object may hold no others but {"base64": "..."}. What `recebe` throws comes
/// through. Returns what is wrong with the line; empty when nothing is.
std::string PercorreLinhaJson(std::string_view linha,
                              const std::function<void(const std::string& chave, TItemJson&& item)>& recebe);

/// Value of a field of that type. Throws TErroTrecho at `onde` when the item is of another kind or out of its range.
TValor ValorDeJson(const TTipoPacote& tipo, TTipoDado dado, TItemJson&& item, const char* onde);

}  // namespace wkd
