#pragma once

#include <filesystem>
#include <optional>

#include "Instantaneo.h"

namespace wkd {

/// What a proof found.
struct TVeredito {
    std::string quando;
    bool bom = false;
    std::string frase;                 // one sentence
    std::vector<std::string> achados;  // tables that are not as they were, and those that could not be compared
};

/// What is kept beside a backup file, under its name and ".json".
struct TManifesto {
    std::string arquivo;  // name of the backup file
    std::string alias, banco, servidor, programa, quando;
    std::map<std::string, std::int64_t> dicionario;  // versions of the tables in SARQUIVO
    std::uintmax_t tamanho = 0, tamanhoDoBanco = 0;
    std::string sha256;   // empty where the file lies on a server
    TInstantaneo antes;   // the database just before the backup's own moment
    TInstantaneo depois;  // tables that were others just behind it
    std::optional<TVeredito> prova;
};

std::filesystem::path CaminhoDoManifesto(const std::filesystem::path& arquivo);
/// Throws std::system_error.
void GravaManifesto(const TManifesto& manifesto, const std::filesystem::path& arquivo);
/// Nothing when there is none. Throws TErroDeBackup for one that cannot be read.
std::optional<TManifesto> LeManifesto(const std::filesystem::path& arquivo);

}  // namespace wkd
