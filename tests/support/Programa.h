#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace wkd {

/// What a program said, and its exit code; -1 when a signal ended it.
struct TSaidaDePrograma {
    int codigo = -1;
    std::string saida, erros;
    bool Diz(std::string_view texto) const { return (saida + erros).find(texto) != std::string::npos; }
};

/// Runs a program in that folder, whose "tmp" is its temporary one, with `entrada` as its standard input.
TSaidaDePrograma RodaPrograma(const std::filesystem::path& programa, const std::vector<std::string>& argumentos,
                              const std::filesystem::path& pasta, std::string_view entrada = "");

}  // namespace wkd
