#include "values/Campo.h"

#include "values/Texto.h"

namespace wkd {

int IndiceDoCampo(const std::vector<TCampo>& campos, std::string_view nome) {
    for (std::size_t i = 0; i < campos.size(); ++i)
        if (IgualSemCaixa(campos[i].nome, nome)) return static_cast<int>(i);
    return -1;
}

}  // namespace wkd
