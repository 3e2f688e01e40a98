#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <unordered_map>

#include "DataPacket.h"

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

}  // namespace wkd
