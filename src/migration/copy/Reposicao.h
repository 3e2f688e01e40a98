#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "connection/Connection.h"
#include "process/EscritaSegura.h"

namespace wkd {

/// Name of the file of rejected rows in the program's folder.
std::filesystem::path ArquivoDeRejeitados(const std::filesystem::path& pasta);
/// For adding lines at the end; one that an earlier run could not write whole, on a full disk, is ended.
TArquivo AbreEmLinhaNova(const std::filesystem::path& arquivo);

/// What became of the rows of one alias in the rejects file.
struct TReposicao {
    std::int64_t repostas = 0;   // inserted now
    std::int64_t presentes = 0;  // found in their table as they are
    std::int64_t antigas = 0;    // of files of earlier versions, which do not say whose they are
    std::int64_t valores = 0;    // single values of rows, or other things than rows: these are not put back
    std::int64_t iguais = 0;     // lines of tables without key that are equal to another one: taken for one row
    struct TQueFica {
        std::string tabela, chave, motivo;
    };
    std::vector<TQueFica> ficam;
};

/// Inserts the rejected rows of the alias that fit now. A single value is not put back: the row it is of is in its
/// table, and may have got another one since. The file only grows: behind its lines come marks that say which
/// of them are done, and why others are not, so that another program may write to it meanwhile, and a second time does
/// nothing new. Throws TErroBanco when the connection is lost, and std::system_error.
TReposicao RepoeRejeitadas(TConnection& conexao, const std::filesystem::path& pasta, const std::string& alias);

/// Rejected rows of the alias that are not back yet, by table.
std::map<std::string, std::int64_t> RejeitadasAbertas(const std::filesystem::path& pasta, const std::string& alias);

/// Every rejected row of the file in words: table, key, error.
std::vector<TReposicao::TQueFica> ListaRejeitadas(const std::filesystem::path& pasta);

}  // namespace wkd
