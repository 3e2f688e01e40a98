#pragma once

#include <filesystem>

#include "context/Contexto.h"

namespace wkd {

/// A run of the alias "LOJA" with the package of this folder, which holds all that the run writes.
inline TOpcoes OpcoesDeTeste(const std::filesystem::path& pasta) {
    TOpcoes opcoes;
    opcoes.alias = "LOJA";
    opcoes.pacote = pasta / "pacote.zip";
    opcoes.marcaNaoCria = pasta / "naocria.wkd";
    opcoes.temporaria = opcoes.pastaPrograma = opcoes.pastaCorrente = pasta;
    opcoes.pausaDeReconexao = std::chrono::milliseconds(100);
    return opcoes;
}

}  // namespace wkd
