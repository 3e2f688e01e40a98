#include "RegistroFirebird.h"

#include <algorithm>

#include "WKDQuery.h"

namespace wkd {

namespace {

std::int64_t BytesPorLetra(TConnection& conexao) {
    return std::max<std::int64_t>(1, ContaRegistros(conexao,
                                                    "select max(c.rdb$bytes_per_character) as total from rdb$database d"
                                                    " join rdb$character_sets c on c.rdb$character_set_name ="
                                                    " d.rdb$character_set_name"));
}

/// Where a value ends that begins at the next multiple of `passo`.
std::int64_t Depois(std::int64_t onde, std::int64_t passo, std::int64_t bytes) {
    return (onde + passo - 1) / passo * passo + bytes;
}

}  // namespace

std::int64_t BytesDoRegistro(TConnection& conexao, const std::vector<TColunaDicionario>& colunas) {
    const std::int64_t letra = BytesPorLetra(conexao);
    const auto fisicas = std::ranges::count_if(colunas, ColunaFisica);
    std::int64_t bytes = (fisicas + 32) / 32 * 4;  // a bit a column says that it is NULL
    for (const auto& coluna : colunas) {
        if (!ColunaFisica(coluna)) continue;
        const std::string tipo = TipoNormal(TipoDaColuna(coluna.tipo, coluna.tamanho, TTipoBanco::tbInterbase));
        if (tipo.starts_with("varchar"))
            bytes = Depois(bytes, 2, 2 + letra * TamanhoDoTexto(coluna.tamanho));
        else if (tipo == "integer" || tipo == "date" || tipo == "time")
            bytes = Depois(bytes, 4, 4);
        else
            bytes = Depois(bytes, 8, 8);
    }
    return bytes;
}

}  // namespace wkd
