#include "Restauracao.h"

#include <gtest/gtest.h>

#include "Arquivos.h"
#include "PastaTemporaria.h"

namespace wkd {
namespace {

TEST(RestauracaoTest, TheTargetFollowsTheSettingsOfTheAlias) {
    struct TCaso {
        const char *nome, *secao, *naBase, *copia, *servidor;
    };
    const TCaso casos[] = {
        {"own keys", "CAMINHO=D:\\Dados\\\nBANCO=hbn.fdb\nLOCAL=srv\nPath=X\nDataBase=Y\nHostname=Z",
         "D:\\Dados\\hbn.fdb", "D:\\Dados\\EMPRESA1_res.fdb", "srv"},
        {"connection keys", "Path=D:\\Dados\nDataBase=hbn.fdb\nHostname=srv", "D:\\Dados\\hbn.fdb",
         "D:\\Dados\\EMPRESA1_res.fdb", "srv"},
        {"folder of a Unix server", "Path=/dados\nDataBase=hbn.fdb\nHostname=srv/3055", "/dados/hbn.fdb",
         "/dados/EMPRESA1_res.fdb", "srv/3055"},
        {"no folder", "DataBase=hbn.fdb", "hbn.fdb", "EMPRESA1_res.fdb", ""},
        {"no settings", "", "", "EMPRESA1_res.fdb", ""},
    };
    for (const TCaso& caso : casos) {
        TPastaTemporaria pasta;
        EscreveArquivo(pasta / "WKD.ini", std::string("[EMPRESA1]\n") + caso.secao + "\n");
        const TAliases aliases(pasta / "WKD.ini");
        EXPECT_EQ(DestinoDaRestauracao(aliases, "EMPRESA1", true).banco, caso.naBase) << caso.nome;
        EXPECT_EQ(DestinoDaRestauracao(aliases, "EMPRESA1", false).banco, caso.copia) << caso.nome;
        EXPECT_EQ(DestinoDaRestauracao(aliases, "EMPRESA1", true).servidor, caso.servidor) << caso.nome;
        EXPECT_EQ(DestinoDaRestauracao(aliases, "EMPRESA1", false).servidor, caso.servidor) << caso.nome;
    }
}

TEST(RestauracaoTest, ReportBackupsAreNamedByDateAndTime) {
    const TDataHora quando{DataDe(2026, 3, 9), {((14 * 60 + 7) * 60 + 5) * kTiquesPorSegundo}};
    EXPECT_EQ(ArquivoPadraoDosRelatorios("programa", quando),
              std::filesystem::path("programa/Backup/Relatorios_09_03-14_07.zip"));
    EXPECT_EQ(NomePropostoDosRelatorios(quando), "Relatorios_090326.zip");
}

}  // namespace
}  // namespace wkd
