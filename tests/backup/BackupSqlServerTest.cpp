// The statements of a SQL Server, and what a server says that takes none of them.
#include "BackupSqlServer.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "BancoOdbc.h"
#include "Explicacao.h"
#include "GramaticaTSql.h"
#include "LojaDeBackup.h"
#include "dialect/Dialeto.h"

namespace wkd {
namespace {

TEST(BackupSqlServer, NamesAndPathsStandInTheStatementsAsTheyAre) {
    EXPECT_EQ(BackupTSql("LO]JA", "D:\\d'agua\\LOJA.bak"),
              "backup database [LO]]JA] to disk = N'D:\\d''agua\\LOJA.bak' with copy_only, noinit, checksum");
    EXPECT_EQ(VerificaTSql("LOJA.bak"), "restore verifyonly from disk = N'LOJA.bak' with checksum");
    EXPECT_EQ(RestauraTSql("LOJA_res", "D:\\LOJA.bak", {{"loja", "E:\\a.mdf"}, {"loja_log", "E:\\b.ldf"}}),
              "restore database [LOJA_res] from disk = N'D:\\LOJA.bak' with move N'loja' to N'E:\\a.mdf', "
              "move N'loja_log' to N'E:\\b.ldf', checksum");
    EXPECT_EQ(RenomeiaTSql("LOJA", "LOJA_antes"),
              (std::vector<std::string>{"alter database [LOJA] set single_user with no_wait",
                                        "alter database [LOJA] modify name = [LOJA_antes]",
                                        "alter database [LOJA_antes] set multi_user"}));
}

/// What the grammar does not know. BACKUP and RESTORE VERIFYONLY were compared with the server's reference, the others
/// not.
constexpr std::string_view kForaDaGramatica[] = {"backup database", "restore ", "alter database"};

TEST(BackupSqlServer, AGrammarOfTSqlTakesTheStatements) {
    std::vector<std::string> comandos = RenomeiaTSql("LO]JA", "LOJA_antes");
    for (const auto& comando :
         {BackupTSql("LOJA", "D:\\d'agua.bak"), VerificaTSql("D:\\d'agua.bak"), ListaDoBackupTSql("D:\\d'agua.bak"),
          RestauraTSql("LOJA_res", "D:\\LOJA.bak", {{"loja", "E:\\a.mdf"}}), ApagaTSql("LOJA_prova"),
          CriaTSql("LOJA_vazio"), PedacosTSql("LOJA's"), EspacoTSql("D:"), std::string(kTamanhoTSql),
          std::string(Dialeto(TTipoBanco::tbSQLServer).ComandoConectados()),
          std::string(Dialeto(TTipoBanco::tbSQLServer).ComandoObjetos())})
        comandos.push_back(comando);
    const auto recusados = RecusadosPelaGramatica(comandos);
    if (!recusados) GTEST_SKIP() << "sqlfluff is not installed";
    for (const auto& comando : comandos)
        EXPECT_EQ(
            recusados->contains(comando),
            std::ranges::any_of(kForaDaGramatica, [&](std::string_view inicio) { return comando.starts_with(inicio); }))
            << comando;
}

TEST(BackupSqlServer, AServerThatCannotSaysSo) {
    const char* ligacao = std::getenv("WKD_SQLSERVER");
    if (!ligacao) GTEST_SKIP() << "WKD_SQLSERVER names no server";
    const auto valor = [texto = std::string(ligacao)](const std::string& chave) {
        const auto onde = texto.find(chave + "=");
        return onde == std::string::npos
                   ? ""
                   : texto.substr(onde + chave.size() + 1, texto.find(';', onde) - onde - chave.size() - 1);
    };
    const TPastaTemporaria pasta;
    TAlias alias;
    alias.nome = "LOJA";
    alias.tipoBanco = "tbSQLServer";
    alias.hostname = valor("SERVER") + "," + valor("PORT");
    alias.database = "master";
    alias.usuario = valor("UID");
    alias.senha = valor("PWD");
    alias.driver = valor("DRIVER");
    const TAliases aliases(pasta / "WKD.ini");
    aliases.AdicionaAlias(alias, false);
    THBNConnection conexao(aliases);
    conexao.SetAlias("LOJA");
    conexao.Open();
    std::string falha;
    try {
        FazBackup(conexao, {"LOJA", "/nenhuma/pasta", 0}, kNinguem);
    } catch (const std::exception& erro) {
        falha = ExplicaFalha(erro);
    }
    EXPECT_TRUE(falha.starts_with("O servidor não atende serviços de backup.")) << falha;
    EXPECT_EQ(RestosDeBackup(conexao), std::vector<std::string>{});
}

}  // namespace
}  // namespace wkd
