// Backs the alias "LOJA" of a folder up into its folder "backups", or puts a backup in the place of its database, and
// ends the process at step n of the progress, as a power cut would. Arguments: folder, n, and for a restore the file,
// and a text of the progress from which on the steps are counted.
// Exit code 9 when it was cut, 0 when the work ended first, 1 when it failed.
#include <unistd.h>

#include <cstdlib>
#include <iostream>

#include "Backup.h"
#include "Troca.h"

int main(int argc, char** argv) {
    using namespace wkd;
    if (argc < 3) return 64;
    const std::filesystem::path pasta = argv[1];
    int resta = std::atoi(argv[2]);
    std::string espera = argc > 4 ? argv[4] : "";
    const auto corta = [&](const TProgresso& progresso) {
        if (progresso.texto == espera) espera.clear();
        if (espera.empty() && --resta == 0) _exit(9);
    };
    try {
        THBNConnection conexao(TAliases(pasta / "WKD.ini"));
        conexao.SetAlias("LOJA");
        conexao.Open();
        if (argc > 3)
            RestauraNaOriginal(conexao, {"LOJA", argv[3], pasta / "backups"}, corta);
        else
            FazBackup(conexao, {"LOJA", pasta / "backups", 0}, corta);
        return 0;
    } catch (const std::exception& erro) {
        std::cerr << erro.what() << '\n';
        return 1;
    }
}
