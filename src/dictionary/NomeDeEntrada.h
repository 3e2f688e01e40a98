#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace wkd {

/// Name of a package entry, taken apart. `recusa` says why it may not be extracted; empty when it may.
struct TNomeDeEntrada {
    std::vector<std::string> partes;  // folders, then the file; "." left out
    bool pasta = false;
    std::string recusa;
};

/// "/" and "\" both separate. Refused: absolute names, "..", drives and streams (":"), control characters.
TNomeDeEntrada AnalisaNomeDeEntrada(std::string_view nome);

/// Why an entry with these external attributes (Unix mode in the upper half) may not be extracted: links and
/// special files. Empty when it may.
std::string RecusaDoTipo(std::uint32_t atributos);

}  // namespace wkd
