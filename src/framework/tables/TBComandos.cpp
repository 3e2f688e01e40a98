#include "tables/TBComandos.h"

#include <algorithm>

#include "values/Texto.h"

namespace wkd {

std::string NomeDaBackup(std::string_view tabela) { return "B" + std::string(tabela); }

const TColunaFisica* ColunaDeNome(const std::vector<TColunaFisica>& colunas, std::string_view nome) {
    const auto achada =
        std::ranges::find_if(colunas, [&](const TColunaFisica& coluna) { return IgualSemCaixa(coluna.nome, nome); });
    return achada == colunas.end() ? nullptr : &*achada;
}

}  // namespace wkd
