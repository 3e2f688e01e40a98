#include "window/Navegacao.h"

#include <gtest/gtest.h>

#include <string>

namespace wkd {
namespace {

TEST(NavegacaoTest, PagesAndTitlesFollowEachOtherInBothDirections) {
    struct TCaso {
        bool comBackup;
        const char* passos;   // ">" next, "<" back
        const char* caminho;  // pages; a title only where one is set
    };
    const TCaso casos[] = {
        {false, ">>>>", "atualizacao|opcoes Opções de Atualização|status Status|status Status"},
        {true, ">>>>", "backup Backup/Restauração|atualizacao Atualização|opcoes Opções de Atualização|status Status"},
        {false, ">>><<<<",
         "atualizacao|opcoes Opções de Atualização|status Status|opcoes Opções|atualizacao Atualização|"
         "alias Definir Alias que será atualizado|alias Definir Alias que será atualizado"},
        {true, ">><", "backup Backup/Restauração|atualizacao Atualização|alias Definir Alias que será atualizado"},
        {true, "><", "backup Backup/Restauração|alias Definir Alias que será atualizado"},
    };
    for (const TCaso& caso : casos) {
        TNavegacao navegacao;
        if (caso.comBackup) navegacao.MostraBackup();
        std::string caminho;
        for (const char passo : std::string(caso.passos)) {
            const TPasso onde = passo == '>' ? navegacao.Proximo() : navegacao.Volta();
            caminho += (caminho.empty() ? "" : "|") + std::string(NomeDaPagina(onde.pagina));
            if (onde.titulo) caminho += " " + std::string(*onde.titulo);
        }
        EXPECT_EQ(caminho, caso.caminho);
    }
}

}  // namespace
}  // namespace wkd
