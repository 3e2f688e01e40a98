// The program from outside: command line, settings file, package, database, log, exit code.
#include <gtest/gtest.h>

#include "Linhas.h"
#include "ProgramaApoio.h"
#include "Retrato.h"
#include "aliases/Aliases.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;

TEST(Programa, UpdatesADatabaseOfAnOldVersion) {
    const TProgramaInstalado loja;
    const auto saida = loja.Atualiza();
    EXPECT_EQ(saida.codigo, 0) << saida.saida << saida.erros;
    EXPECT_TRUE(saida.Diz("Criou a tabela: TNOTA_FISCAL"));
    EXPECT_TRUE(saida.Diz("Tempo de Atualização: 00:"));
    EXPECT_TRUE(fs::exists(loja / "AtualizaWKD.log"));
    EXPECT_FALSE(fs::exists(loja / "tmp/AtualWkd"));
    {
        const auto banco = loja.Banco();
        EXPECT_EQ(Linhas(*banco, "select count(*), sum(limite_credito), max(email) from tcli_con"), "5|99500|<null>");
        EXPECT_EQ(Linhas(*banco,
                         "select versao from sarquivo where nome_arquivo in ('TCLI_CON', 'TNOTA_FISCAL') "
                         "order by nome_arquivo"),
                  "4;1");
        EXPECT_EQ(Linhas(*banco, "select codigo, versao, iif(utl_atualizacao > '2026-01-01', 1, 0) from sistema"),
                  "1|7.17|1");
        EXPECT_EQ(banco->ChavePrimaria("TNOTA_FISCAL").colunas, (std::vector<std::string>{"SERIE", "NUMERO"}));
        EXPECT_EQ(banco->Indices("TNOTA_FISCAL").size(), 2u);
        EXPECT_EQ(Linhas(*banco, "select count(*) from satrib where arquivo = 'TTRANSPORTADORA'"), "4");
    }
    const std::string depois = loja.Retrato();
    const auto segunda = loja.Atualiza();
    EXPECT_EQ(segunda.codigo, 0) << segunda.erros;
    EXPECT_FALSE(segunda.Diz("Atualizou o arquivo"));
    EXPECT_FALSE(segunda.Diz("Executando Query"));
    EXPECT_EQ(Diferencas(depois, loja.Retrato()), "");
}

TEST(Programa, HelpVersionAndWrongArguments) {
    const TProgramaInstalado loja;
    EXPECT_EQ(loja.Roda({"--help"}).codigo, 0);
    EXPECT_TRUE(loja.Roda({"--version"}).Diz("7.17"));
    EXPECT_EQ(loja.Roda({"LOJA", "pacote.zip"}).codigo, 64);
    EXPECT_EQ(loja.Roda({"--nada"}).codigo, 64);
}

/// On a machine where a library of this name cannot be loaded.
TSaidaDePrograma RodaSem(const char* biblioteca, const TProgramaInstalado& loja, std::vector<std::string> argumentos) {
    argumentos.insert(argumentos.begin(),
                      {"ASAN_OPTIONS=verify_asan_link_order=0:detect_leaks=0", "LD_PRELOAD=" WKD_SEM_BIBLIOTECA,
                       std::string("WKD_FALTA=") + biblioteca, "./AtualizaWKD"});
    return RodaPrograma("/usr/bin/env", argumentos, loja / "");
}

TEST(Programa, WithoutFirebirdsClientSaysWhatToInstallAndServesOtherServers) {
    const TProgramaInstalado loja;
    EXPECT_TRUE(loja.Roda({"--version"}).Diz("Cliente do Firebird: LI-V"));
    const auto versao = RodaSem("fbclient", loja, {"--version"});
    EXPECT_EQ(versao.codigo, 0) << versao.erros;
    EXPECT_TRUE(versao.Diz("7.17") && versao.Diz("não encontrado")) << versao.saida;
    for (const auto& pedido : {std::vector<std::string>{"--testa-alias", "LOJA"}, {"LOJA;", "pacote.zip"}}) {
        const auto teste = RodaSem("fbclient", loja, pedido);
        EXPECT_EQ(teste.codigo, 3) << teste.erros;
        EXPECT_TRUE(teste.Diz("Instale o pacote libfbclient2")) << teste.erros;
    }
    loja.Escreve("WKD.ini", "[CAIXA]\nTipoBanco=tbSQLServer\nHostname=127.0.0.1,1\nDataBase=caixa\n");
    const auto outro = RodaSem("fbclient", loja, {"--testa-alias", "CAIXA"});
    EXPECT_EQ(outro.erros, loja.Roda({"--testa-alias", "CAIXA"}).erros);  // nobody answers at that port
    EXPECT_NE(outro.erros, "");
}

TEST(Programa, WithoutTheLibraryOfPackagesSaysWhatToInstallAndServesWhatNeedsNone) {
    const TProgramaInstalado loja;
    const auto atualizacao = RodaSem("libzip", loja, {"LOJA;", "pacote.zip"});
    EXPECT_EQ(atualizacao.codigo, 2) << atualizacao.erros;
    EXPECT_TRUE(atualizacao.Diz("Instale o pacote libzip4")) << atualizacao.erros;
    EXPECT_EQ(Linhas(*loja.Banco(), "select VERSAO from SARQUIVO where NOME_ARQUIVO = 'TVENDA'"), "2");
    EXPECT_EQ(RodaSem("libzip", loja, {"--testa-alias", "LOJA"}).codigo, 0);
}

TEST(Programa, KeepsTheAliases) {
    const TProgramaInstalado loja;
    const auto pasta = (loja / "").string();
    std::vector<std::string> novo = {"--novo-alias", "FILIAL",   "--tipo",    "tbInterbase",
                                     "--hostname",   "",         "--path",    pasta.substr(0, pasta.size() - 1),
                                     "--database",   "loja.fdb", "--usuario", "SYSDBA",
                                     "--menu"};
    EXPECT_EQ(loja.Roda(novo, "segredo da filial\n").codigo, 0);
    EXPECT_EQ(loja.Arquivo("WKD.ini").find("segredo"), std::string::npos);
    EXPECT_NE(loja.Arquivo("WKD.ini").find("Path=" + pasta), std::string::npos) << "with its separator";
    EXPECT_EQ(loja.Roda({"--lista-alias"}).saida, "LOJA\nFILIAL\n");
    const auto teste = loja.Roda({"--testa-alias", "FILIAL"});
    EXPECT_EQ(teste.codigo, 0) << teste.erros;
    EXPECT_TRUE(teste.Diz("tbInterbase") && teste.Diz("loja.fdb") && teste.Diz("Firebird 3")) << teste.saida;

    const std::string antes = loja.Arquivo("WKD.ini");
    const auto outra = loja.Roda(novo, "outra\n");
    EXPECT_EQ(outra.codigo, 64);
    EXPECT_TRUE(outra.Diz("já existe") && outra.Diz("--troca") && outra.Diz("--muda-senha")) << outra.erros;
    EXPECT_EQ(loja.Arquivo("WKD.ini"), antes);
    novo.emplace_back("--troca");
    EXPECT_EQ(loja.Roda(novo, "outra\n").codigo, 0);
    EXPECT_EQ(TAliases(loja / "WKD.ini").CarregaAlias("FILIAL").senha, "outra");
    EXPECT_EQ(loja.Roda({"--muda-senha", "FILIAL"}, "terceira\n").codigo, 0);
    for (const char* secao : {"FILIAL", "MENU"})
        EXPECT_EQ(TAliases(loja / "WKD.ini").CarregaAlias(secao).senha, "terceira") << secao;

    EXPECT_EQ(loja.Roda({"--remove-alias", "FILIAL"}).codigo, 0);
    EXPECT_EQ(loja.Roda({"--testa-alias", "FILIAL"}).codigo, 3);
    EXPECT_EQ(loja.Roda({"--muda-senha", "FILIAL"}, "x\n").codigo, 3);
}

TEST(Programa, WritesNoAliasThatDoesNotConnectUnlessToldNotToTry) {
    const TProgramaInstalado loja;
    std::vector<std::string> novo = {"--novo-alias",       "FILIAL",     "--tipo",     "tbInterbase", "--path",
                                     (loja / "").string(), "--database", "nao_ha.fdb", "--usuario",   "SYSDBA"};
    const auto antes = loja.Arquivo("WKD.ini");
    const auto saida = loja.Roda(novo, "x\n");
    EXPECT_EQ(saida.codigo, 3);
    EXPECT_TRUE(saida.Diz("Corrija o caminho e o nome do banco") && saida.Diz("--sem-teste")) << saida.erros;
    EXPECT_EQ(loja.Arquivo("WKD.ini"), antes);
    novo.emplace_back("--sem-teste");
    EXPECT_EQ(loja.Roda(novo, "x\n").codigo, 0);
    EXPECT_EQ(loja.Roda({"--muda-senha", "FILIAL"}, "y\n").codigo, 3);
    EXPECT_EQ(TAliases(loja / "WKD.ini").CarregaAlias("FILIAL").senha, "x");
    EXPECT_EQ(loja.Roda({"--muda-senha", "FILIAL", "--sem-teste"}, "y\n").codigo, 0);
    EXPECT_EQ(TAliases(loja / "WKD.ini").CarregaAlias("FILIAL").senha, "y");
}

/// What is wrong, the exit code it ends in, and what the message must name.
struct TCaso {
    const char* nome;
    std::function<void(const TProgramaInstalado&)> estraga;
    int codigo;
    std::vector<const char*> mencoes;
};

void TrocaNoIni(const TProgramaInstalado& loja, const std::string& de, const std::string& para) {
    std::string ini = loja.Arquivo("WKD.ini");
    ini.replace(ini.find(de), de.size(), para);
    loja.Escreve("WKD.ini", ini);
}

void TrocaNoPacote(const TProgramaInstalado& loja, const fs::path& arquivo, std::string_view bytes) {
    loja.Escreve("fontes" / arquivo, bytes);
    loja.Empacota();
}

TEST(Programa, SaysWhatIsWrongAndLeavesTheDatabaseAsItWas) {
    const TCaso casos[] = {
        {"no settings file", [](auto& loja) { fs::remove(loja / "WKD.ini"); }, 3, {"WKD.Ini"}},
        {"unknown alias", [](auto& loja) { TrocaNoIni(loja, "[LOJA]", "[OUTRA]"); }, 3, {"LOJA", "WKD.ini"}},
        {"unknown kind", [](auto& loja) { TrocaNoIni(loja, "tbInterbase", "tbDbase"); }, 3, {"tbDbase"}},
        {"kind without driver", [](auto& loja) { TrocaNoIni(loja, "tbInterbase", "tbOracle"); }, 3, {"tbOracle"}},
        {"server down", [](auto& loja) { TrocaNoIni(loja, "Hostname=", "Hostname=127.0.0.1/1"); }, 3, {"127.0.0.1"}},
        {"database missing", [](auto& loja) { fs::rename(loja / "loja.fdb", loja / "x.fdb"); }, 3, {"loja.fdb"}},
        {"not a database", [](auto& loja) { loja.Escreve("loja.fdb", std::string(9000, 'x')); }, 3, {"loja.fdb"}},
        {"database read-only",
         [](auto& loja) {
             ASSERT_EQ(std::system(("gfix -mode read_only '" + (loja / "loja.fdb").string() + "'").c_str()), 0);
         },
         2,
         {"só de leitura", "gfix -mode read_write"}},
        {"rows of a commit",
         [](auto& loja) { TrocaNoIni(loja, "[LOJA]", "[LOJA]\nLinhasPorCommit=100001"); },
         2,
         {"LinhasPorCommit", "100001", "WKD.ini"}},
        {"package missing",
         [](auto& loja) { fs::remove(loja / "pacote.zip"); },
         2,
         {"Arquivo de atualizção não existe"}},
        {"package not a zip",
         [](auto& loja) { loja.Escreve("pacote.zip", "isto não é um zip"); },
         2,
         {"pacote.zip", "zip"}},
        {"package truncated",
         [](auto& loja) { fs::resize_file(loja / "pacote.zip", fs::file_size(loja / "pacote.zip") / 2); },
         2,
         {"pacote.zip"}},
        {"no table snapshot",
         [](auto& loja) {
             fs::remove(loja / "fontes/SARQUIVO.WKD");
             loja.Empacota();
         },
         2,
         {"SARQUIVO.WKD"}},
        {"snapshot truncated",
         [](auto& loja) { TrocaNoPacote(loja, "SAtrib.WKD", loja.Arquivo("fontes/SAtrib.WKD").substr(0, 3000)); },
         2,
         {"SAtrib.WKD"}},
        {"snapshot of another format",
         [](auto& loja) { TrocaNoPacote(loja, "SAtrib.WKD", "%PDF-1.4"); },
         2,
         {"SAtrib.WKD"}},
        {"snapshot without a column",
         [](auto& loja) {
             std::string texto = loja.Arquivo("fontes/SARQUIVO.WKD");
             for (std::size_t p = 0; (p = texto.find("NOME_ARQUIVO", p)) != std::string::npos;)
                 texto.replace(p, 12, "NOME");
             TrocaNoPacote(loja, "SARQUIVO.WKD", texto);
         },
         2,
         {"SARQUIVO.WKD", "NOME_ARQUIVO"}},
        {"the maker's own alias", [](auto& loja) { TrocaNoIni(loja, "[LOJA]", "[wkd]"); }, 2, {"WKD Software"}},
    };
    for (const TCaso& caso : casos) {
        SCOPED_TRACE(caso.nome);
        const TProgramaInstalado loja;
        caso.estraga(loja);
        const bool doFabricante = loja.Arquivo("WKD.ini").find("[wkd]") != std::string::npos;
        const auto saida = doFabricante ? loja.Roda({" wkd;", "pacote.zip"}) : loja.Atualiza();
        EXPECT_EQ(saida.codigo, caso.codigo) << saida.saida << saida.erros;
        for (const char* mencao : caso.mencoes) EXPECT_TRUE(saida.Diz(mencao)) << mencao << "\n" << saida.erros;
        EXPECT_FALSE(saida.Diz("Atualizou o arquivo"));
        if (caso.codigo != 2) continue;
        const auto banco = loja.Banco();
        EXPECT_EQ(Linhas(*banco, "select count(*), sum(versao) from sarquivo"), "12|20");
        EXPECT_EQ(Linhas(*banco, "select count(*) from tini"), "0");
    }
}

TEST(Programa, RefusesADatabaseWithoutDictionary) {
    const TProgramaInstalado loja;
    loja.Banco()->ExecuteDirect("drop table SATRIB");
    const std::string antes = loja.Retrato();
    const auto saida = loja.Atualiza();
    EXPECT_EQ(saida.codigo, 2) << saida.erros;
    EXPECT_TRUE(saida.Diz("SATRIB"));
    EXPECT_EQ(Diferencas(antes, loja.Retrato()), "");
}

TEST(Programa, StopsAtConnectedUsersWhenTheChangeIsExclusive) {
    const TProgramaInstalado loja;
    loja.Banco()->ExecuteDirect("update csenha set flag1 = 1");
    const auto saida = loja.Atualiza();
    EXPECT_EQ(saida.codigo, 2) << saida.erros;
    EXPECT_TRUE(saida.Diz("Tabela = TCONTAS_REC | Campo = DOCUMENTO de ftString(20) para ftString(30)"));
    EXPECT_TRUE(saida.Diz("Esta atualização requer que todos os usuários fechem o sistema."));
    EXPECT_EQ(Linhas(*loja.Banco(), "select count(*), sum(versao) from sarquivo"), "12|20");
}

TEST(Programa, ReportsWhatFailsInATableAndGoesOn) {
    const TProgramaInstalado loja;
    TrocaNoPacote(loja, "SPESQ.WKD",
                  "<?xml version=\"1.0\"?><DATAPACKET Version=\"2.0\"><METADATA><FIELDS>"
                  "<FIELD attrname=\"ARQUIVO\" fieldtype=\"string\" WIDTH=\"200\"/></FIELDS></METADATA>"
                  "<ROWDATA><ROW ARQUIVO=\"" +
                      std::string(120, 'A') + "\"/></ROWDATA></DATAPACKET>");
    const auto saida = loja.Atualiza();
    EXPECT_EQ(saida.codigo, 1) << saida.erros;
    EXPECT_TRUE(saida.erros.find("SPESQ") != std::string::npos) << saida.erros;
    EXPECT_NE(loja.Arquivo("AtualizaWKD.log").find("SPESQ"), std::string::npos);
    EXPECT_TRUE(saida.Diz("Criou a tabela: TNOTA_FISCAL"));
}

}  // namespace
}  // namespace wkd
