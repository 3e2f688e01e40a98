#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace wkd {

/// What the wizard's pages say about one update run.
struct TOpcoes {
    std::string alias;  // as typed
    std::filesystem::path pacote;
    bool tabelasSelecionadas = false;  // cbTabela
    std::vector<std::string> tabelas;  // mListaTabelas
    bool modoCompleto = false;         // rgModoAtualizacao on "Completo"
    bool completo = false;             // cbCompleto
    bool todas = false;                // cbAtualizaTodas
    bool querysAnteriores = true;      // chkQuerysAnteriores
    bool querysPosteriores = true;     // chkQuerysPosteriores

    std::chrono::milliseconds pausaDeReconexao{10'000};  // before the second try of three, twice that before the third

    std::filesystem::path marcaNaoCria;         // its presence turns null validation, layouts and system files off
    std::filesystem::path temporaria;           // below it the working directory is made
    std::filesystem::path pastaPrograma;        // log, rejects file
    std::filesystem::path pastaCorrente = ".";  // "erroCria.sql", marker files of the tables
};

}  // namespace wkd
