#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "context/Contexto.h"

namespace wkd {

/// Narrows every text column of 2000 characters or more to 1998, through a temporary column. The dictionary records
/// 1988, so a column is converted once. Texts that are cut are kept whole in the rejects file, and told.
void AjustaCamposStringMaior2000(TContexto& ctx);
/// Section of TINI that names the column of a table under conversion; without TINI the columns themselves must tell.
inline constexpr std::string_view kSecaoDaMarca = "CampoMigraWKD";
/// Characters that it leaves in the column, and the size that it records.
inline constexpr int kLarguraAjustada = 1998, kTamanhoAjustado = 1988;
/// A column that it would narrow, the statements of it, and how many texts it would cut.
struct TTextoParaAjustar {
    std::string tabela, coluna;
    std::vector<std::string> comandos;
    std::int64_t cortados = 0;
};
std::vector<TTextoParaAjustar> TextosParaAjustar(TContexto& ctx);
/// Once per SQL Server database: makes COD_INTERNO of three tables nvarchar(25).
void AtualizaCamposVarCharparaNvarChar(TContexto& ctx);

}  // namespace wkd
