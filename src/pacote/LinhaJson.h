#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "TiposPacote.h"

namespace wkd {

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
