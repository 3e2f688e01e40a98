#include "LojaDeBackup.h"

#include <algorithm>

#include "aliases/Aliases.h"

namespace wkd {

std::string TLojaDeBackup::MontaSenha(const std::string& usuario, const std::string& senha) {
    return wkd::MontaSenha(usuario, senha);
}

std::vector<std::string> TLojaDeBackup::Arquivos(const std::filesystem::path& pasta) const {
    std::vector<std::string> nomes;
    for (const auto& entrada : std::filesystem::directory_iterator(pasta))
        nomes.push_back(entrada.path().filename().string());
    std::erase_if(nomes, [](const auto& nome) { return nome == "WKD.ini" || nome == "backups"; });
    std::ranges::sort(nomes);
    return nomes;
}

}  // namespace wkd
