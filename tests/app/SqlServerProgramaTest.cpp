// The installed program on the SQL Server that the environment variable WKD_SQLSERVER names.
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <thread>

#include "Arquivos.h"
#include "Linhas.h"
#include "LojaSqlServer.h"
#include "ProgramaApoio.h"
#include "package/Pacote.h"
#include "package/TravaDoBanco.h"
#include "values/Texto.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using TRelogio = std::chrono::steady_clock;

class SqlServerPrograma : public testing::Test {
  protected:
    void SetUp() override {
        if (!TBancoSqlServer::Instalado()) GTEST_SKIP() << "WKD_SQLSERVER is not set";
        loja_ = std::make_unique<TLojaSqlServer>(fs::path(WKD_EXEMPLOS) / "banco.sql");
        fs::copy_file(loja_->Pasta() / "WKD.ini", programa_ / "WKD.ini", fs::copy_options::overwrite_existing);
    }

    std::string Updates() { return Le("select session_id from sys.dm_exec_requests where command like 'UPDATE%'"); }

    /// Waits until the server has been at an UPDATE for two seconds.
    void EsperaUpdate() {
        const auto ate = TRelogio::now() + 120s;
        auto desde = TRelogio::now();
        for (std::string antes; TRelogio::now() < ate; std::this_thread::sleep_for(50ms)) {
            const auto agora = Updates();
            if (agora != antes || agora.empty()) desde = TRelogio::now();
            if (TRelogio::now() - desde > 2s) return;
            antes = agora;
        }
        throw std::runtime_error("no update takes long");
    }

    std::string Le(std::string_view sql) { return Linhas(loja_->Conexao(), sql); }

    /// What is to be done to each table of the alias, and why.
    std::string Decisoes(const std::string& alias) {
        const auto plano = nlohmann::json::parse(programa_.Roda({"--plano", alias, "pacote.zip", "--json"}).saida);
        std::string texto;
        for (const auto& tabela : plano.at("tabelas"))
            for (const char* campo : {"tabela", "acao", "motivo", "mudancas"}) texto += tabela.at(campo).dump() + "\n";
        return texto;
    }

    TProgramaInstalado programa_;
    std::unique_ptr<TLojaSqlServer> loja_;
};

TEST_F(SqlServerPrograma, ASupportBundleHasTheSchemaAndNoRow) {
    loja_->Conexao().ExecuteDirect("update TFORNECE set NOME = 'zqxv'");
    const auto saida = programa_.Roda({"--suporte", "LOJA", "s.zip", "--pacote", "pacote.zip"});
    ASSERT_EQ(saida.codigo, 0) << saida.erros;
    EXPECT_TRUE(saida.Diz("só um Firebird copia o esquema")) << saida.erros;
    const TPastaTemporaria pasta;
    ASSERT_TRUE(ExtraiPacote(programa_ / "s.zip", pasta.Caminho(), nullptr).empty());
    for (const char* nome : {"esquema.json", "plano.json", "confere.json", "dicionario-SATRIB.xml"})
        EXPECT_TRUE(fs::exists(pasta / nome)) << nome;
    for (const auto& entrada : fs::directory_iterator(pasta.Caminho()))
        EXPECT_EQ(LeArquivo(entrada.path()).find("zqxv"), std::string::npos) << entrada.path();

    const std::string ini = programa_.Arquivo("WKD.ini"), banco = AliasDoSqlServer("").database, vazio = banco + "v";
    programa_.Escreve("WKD.ini", ini + Troca(Troca(ini, "[LOJA]", "[VAZIO]"), banco, vazio));
    const auto feito = programa_.Roda({"--reproduz", "s.zip", "VAZIO"});
    EXPECT_EQ(feito.codigo, 0) << feito.erros;
    EXPECT_EQ(Decisoes("LOJA"), Decisoes("VAZIO"));
    loja_->Conexao().ExecuteDirect("drop database " + vazio);
}

/// Every update of SARQUIVO takes half a minute.
constexpr std::string_view kDemora =
    "create trigger TG_DEMORA on SARQUIVO after update as begin declare @ate datetime; set @ate = dateadd(second, 30,"
    " getdate()); while getdate() < @ate set @ate = @ate end";

TEST_F(SqlServerPrograma, ASignalEndsARunWhoseStatementTakesLongAndTheNextRunFinishesIt) {
    const auto quantos = Le("select count(*) from TCONTAS_REC");
    loja_->Conexao().ExecuteDirect(kDemora);
    auto corrida = programa_.Comeca();
    EsperaUpdate();
    const auto quando = TRelogio::now();
    corrida.Sinaliza(SIGTERM);
    EXPECT_EQ(corrida.Espera(12s), 128 + SIGTERM) << programa_.Arquivo("erros.txt");
    EXPECT_LT(TRelogio::now() - quando, 9s);
    EXPECT_EQ(programa_.Arquivo("erros.txt").find("à força"), std::string::npos) << programa_.Arquivo("erros.txt");
    for (const char* arquivo : {"AtualizaWKD.log", "AtualizaWKD.relatorio.json"})
        EXPECT_NE(programa_.Arquivo(arquivo).find("Interrompida: rode de novo"), std::string::npos) << arquivo;
    EXPECT_EQ(Le("select count(*) from TCONTAS_REC"), quantos);

    while (!Updates().empty()) std::this_thread::sleep_for(200ms);  // a server may go on until it ends
    loja_->Conexao().ExecuteDirect("drop trigger TG_DEMORA");
    programa_.Atualiza();
    EXPECT_EQ(Le("select count(*) from TCONTAS_REC"), quantos);
    EXPECT_EQ(Le("select count(*) from BTCONTAS_REC"), quantos) << "it has been rebuilt";
}

TEST_F(SqlServerPrograma, TheSecondOfTwoProgramsNamesTheFirstAndTouchesNothing) {
    TTravaDoBanco trava(loja_->Modulo().SQLConnection1);
    const auto antes = Le("select NOME_ARQUIVO, VERSAO from SARQUIVO order by 1");
    const auto saida = programa_.Atualiza();
    EXPECT_EQ(saida.codigo, 2) << saida.saida << saida.erros;
    char computador[256] = {};
    gethostname(computador, sizeof computador - 1);
    for (const std::string& parte :
         {std::string("Outra atualização deste banco de dados está em andamento"), std::string(" em ") + computador,
          std::string(", desde "), std::string("(usuário "), std::string("conexão ")})
        EXPECT_NE(saida.erros.find(parte), std::string::npos) << parte << "\n" << saida.erros;
    EXPECT_FALSE(saida.Diz("Iniciando atualização"));
    EXPECT_EQ(Le("select NOME_ARQUIVO, VERSAO from SARQUIVO order by 1"), antes);
}

}  // namespace
}  // namespace wkd
