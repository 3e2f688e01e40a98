#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace wkd {

/// Something about a table that a person should know before it is touched.
struct TAchado {
    std::string tipo;    // one word for machines, such as "texto-longo"
    std::string coluna;  // or the columns, or an index; may be empty
    std::string texto;   // one sentence
    std::int64_t quantos = 0;
    std::vector<std::string> exemplos;  // a few keys, with the value where there is one
};
using TAchados = std::vector<TAchado>;

}  // namespace wkd
