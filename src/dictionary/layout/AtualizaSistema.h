#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "datamodule/DataModulo.h"
#include "layout/ReconstrucoesAbertas.h"
#include "package/Pacote.h"

namespace wkd {

/// Empties and refills the system tables from the package's "*.wkd" files, but the two dictionary snapshots. One
/// transaction a table: after an error the next file follows. Returns the files whose table, or one of whose columns,
/// does not exist yet, and those that failed or have to wait: a column may be too narrow so far, a rebuild open.
std::vector<std::filesystem::path> AtualizaSistema(TDataModulo& dm, const TPastaDeTrabalho& pasta,
                                                   const TReconstrucoesAbertas& abertas = {});
/// Loads the files that AtualizaSistema returned, once the tables have been brought up; what fails now is reported
/// (error list, run log).
void RecarregaAdiados(TDataModulo& dm, const std::vector<std::filesystem::path>& arquivos);

/// Inserts the rows of a packet file into a table, in the open transaction; how many. Throws TErroConhecido.
std::size_t IncluiLinhas(TConnection& conexao, const std::string& tabela, const std::filesystem::path& arquivo);

/// Whether a packet of that name takes the place of rows that are the customer's: neither the dictionary's, nor those
/// of SISTEMA, where the release is recorded.
bool TrocaRegistrosDoCliente(std::string_view tabela);
/// Rows that a packet file takes out of such a table, and those that it brings.
struct TTrocaDeRegistros {
    std::string tabela, arquivo;
    std::int64_t saem = 0, entram = 0;
};
/// What AtualizaSistema would do of that; passes over packets that cannot be read. Throws TErroBanco.
std::vector<TTrocaDeRegistros> TrocasDeRegistros(TDataModulo& dm, const TPastaDeTrabalho& pasta);

}  // namespace wkd
