// An update over a network that fails: connections that end, and servers that fall silent.
#include <gtest/gtest.h>

#include <memory>
#include <mutex>

#include "Intermediario.h"
#include "Linhas.h"
#include "OpcoesDeTeste.h"
#include "QuedaApoio.h"
#include "ServidorFirebird.h"
#include "TelaDeTeste.h"
#include "plan/Plano.h"
#include "run/Atualizacao.h"
#include "server/Vigia.h"
#include "values/Texto.h"

namespace wkd {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

/// Prazos that no server is given but in tests.
constexpr TPrazos kCurtos{.aviso = 150ms, .pergunta = 100ms, .limite = 1200ms};

class TTelaVigiada : public TTelaDeTeste {
  public:
    void SemResposta(std::string_view texto) override {
        const std::lock_guard trava(guarda_);
        silencios_.emplace_back(texto);
    }
    bool Disse(std::string_view texto) {
        const std::lock_guard trava(guarda_);
        return Contem(silencios_, texto);
    }

  private:
    std::mutex guarda_;
    std::vector<std::string> silencios_;
};

class Reconexao : public testing::Test {
  protected:
    void SetUp() override {
        if (!TServidorFirebird::Instalado()) GTEST_SKIP() << "no Firebird server installed";
        molde_.CopiaPara(raiz_ / "inteira");
        ASSERT_EQ(Corre(raiz_ / "inteira", 0), 0) << LeArquivo(raiz_ / "inteira/erros.txt");
        ASSERT_EQ(Corre(raiz_ / "inteira", 0), 0);
        esperado_ = RetratoDe(raiz_ / "inteira");
        const auto endereco = TServidorFirebird::DoProcesso().Endereco();
        rede_ = std::make_unique<TIntermediario>(std::stoi(endereco.substr(endereco.find('/') + 1)));
    }

    /// Alias "LOJA" of the folder's database, behind the network; "DIRETA" is beside it.
    void Prepara() {
        molde_.CopiaPara(pasta_);
        EscreveArquivo(pasta_ / "naocria.wkd", "");
        TAlias alias;
        alias.tipoBanco = "tbInterbase";
        alias.path = (pasta_ / "").string();
        alias.database = "loja.fdb";
        alias.usuario = "SYSDBA";
        alias.senha = "masterkey";
        alias.nome = "LOJA";
        alias.hostname = "127.0.0.1/" + std::to_string(rede_->Porta());
        TAliases(pasta_ / "rede.ini").AdicionaAlias(alias, false);
        alias.nome = "DIRETA";
        alias.hostname = TServidorFirebird::DoProcesso().Endereco();
        TAliases(pasta_ / "rede.ini").AdicionaAlias(alias, false);
    }

    /// An update during which `acao` is called before the n-th statement that holds the text.
    TFimDaAtualizacao Atualiza(std::string_view comando, int vez, const std::function<void()>& acao,
                               const TPrazos& prazos = {}) {
        tela_ = std::make_unique<TTelaVigiada>();
        TDataModulo dm(TAliases(pasta_ / "rede.ini"), *tela_);
        dm.SQLConnection1.SetAlias("LOJA");
        dm.SQLConnection1.Open();
        int vezes = 0;
        dm.SQLConnection1.Observa([&](std::string_view sql) {
            if (sql.find(comando) != std::string_view::npos && ++vezes == vez) acao();
        });
        TEstado estado;
        TOpcoes opcoes = OpcoesDeTeste(pasta_);
        opcoes.pausaDeReconexao = 100ms;
        const TVigia vigia(dm.SQLConnection1, prazos, [&](std::string_view t) { tela_->SemResposta(t); });
        TAtualizacao atualizacao(dm, opcoes, estado);
        const auto fim = atualizacao.Executa();
        evidencia_ = atualizacao.Evidencia();
        EXPECT_GE(vezes, vez) << "the statement was not reached";
        comandos_ = vezes;
        return fim;
    }

    /// The server closes a database a moment after its last connection has ended.
    void EsperaLivre() {
        for (int vez = 0; vez < 200; ++vez) try {
                CriaConexaoFirebird(ParametrosFirebird(pasta_ / "loja.fdb"))->Open();
                return;
            } catch (const TErroBanco&) {
                std::this_thread::sleep_for(50ms);
            }
    }

    void EsperaConserto() {
        EsperaLivre();
        const int segunda = Corre(pasta_, 0);
        EXPECT_EQ(Diferencas(esperado_, RetratoDe(pasta_)), "");
        EXPECT_EQ(segunda, 0) << LeArquivo(pasta_ / "erros.txt");
    }

    bool Reabriu() const { return TTelaDeTeste::Contem(tela_->memo1, "Conexão com o banco de dados reaberta"); }
    TDesfecho Desfecho(const std::string& tabela) const {
        const auto achada = std::ranges::find(evidencia_.tabelas, tabela, &TTabelaRegistrada::nome);
        EXPECT_NE(achada, evidencia_.tabelas.end()) << tabela;
        return achada == evidencia_.tabelas.end() ? TDesfecho::NaoSeAplica : achada->desfecho;
    }
    /// Errors that are of no other one.
    auto Raizes() const { return std::ranges::count(evidencia_.erros, false, &TErroDaExecucao::consequencia); }
    std::string Erros() const { return Junta(tela_->memo2, "\n") + Junta(tela_->infos, "\n"); }

    const TMolde molde_;
    const TPastaTemporaria raiz_;
    const fs::path pasta_ = raiz_ / "loja";
    std::string esperado_;
    int comandos_ = 0;  // with the text, in the last update
    TEvidencia evidencia_;
    std::unique_ptr<TIntermediario> rede_;
    std::unique_ptr<TTelaVigiada> tela_;
};

TEST_F(Reconexao, ALostConnectionCostsOneStepAndTheNextTableFollows) {
    struct TCaso {
        const char* comando;
        int vez;
    };
    for (const TCaso& caso : {TCaso{"alter table TALT", 1}, TCaso{"insert into BTREC", 1}, TCaso{"drop table TREC", 1},
                              TCaso{"Create Table TREC", 1}, TCaso{"insert into TREC", 2}})
        for (const bool semVolta : {false, true}) {
            SCOPED_TRACE(std::string(caso.comando) + (semVolta ? ", the answer lost" : ", cut before"));
            Prepara();
            const auto fim =
                Atualiza(caso.comando, caso.vez, [&] { semVolta ? rede_->CortaAVolta() : rede_->Corta(); });
            EXPECT_EQ(fim, TFimDaAtualizacao::Concluida) << Erros();
            EXPECT_TRUE(Reabriu()) << Erros();
            EXPECT_FALSE(Erros().empty());
            EXPECT_TRUE(TTelaDeTeste::Contem(tela_->memo1, "Criou a tabela: TNOVA")) << "the next table";
            EXPECT_EQ(Raizes(), 1) << "the loss, and what failed of it: " << Erros();
            EXPECT_EQ(Desfecho("TNOVA"), TDesfecho::Feito);
            const std::string cortada = std::string_view(caso.comando).find("TALT") < 99 ? "TALT" : "TREC";
            EXPECT_TRUE(Desfecho(cortada) == TDesfecho::NaoFeito || Desfecho(cortada) == TDesfecho::PelaMetade);
            EXPECT_TRUE(evidencia_.naoRodaram.empty());
            EsperaConserto();
        }
}

TEST_F(Reconexao, AConnectionThatDiedBeforeIsOpenedAgainAndNothingReported) {
    Prepara();
    TTelaVigiada tela;
    TDataModulo dm(TAliases(pasta_ / "rede.ini"), tela);
    dm.SQLConnection1.SetAlias("LOJA");
    dm.SQLConnection1.Open();
    TEstado estado;
    const TOpcoes opcoes = OpcoesDeTeste(pasta_);
    rede_->Corta();
    EXPECT_TRUE(Planeja(dm, opcoes, estado));
    rede_->Corta();
    EXPECT_EQ(TAtualizacao(dm, opcoes, estado).Executa(), TFimDaAtualizacao::Concluida);
    EXPECT_EQ(Junta(tela.memo2, "\n") + Junta(tela.infos, "\n"), "");
    dm.SQLConnection1.Close();
    EsperaConserto();
}

TEST_F(Reconexao, WhereverTheNetworkBreaksTheNextRunFinishes) {
    std::vector<int> falhas;
    Prepara();
    Atualiza("", 1, [] {});
    const int comandos = comandos_;
    for (int n = 3; n < comandos; n += 37) {
        SCOPED_TRACE("statement " + std::to_string(n) + " of " + std::to_string(comandos));
        Prepara();
        Atualiza("", n, [&] { n % 2 ? rede_->CortaAVolta() : rede_->Corta(); });
        EXPECT_FALSE(Erros().empty() && tela_->log.empty() && !Reabriu()) << "nobody was told";
        EsperaConserto();
    }
}

TEST_F(Reconexao, AServerThatDoesNotComeBackEndsTheRunWithAWarning) {
    Prepara();
    const auto fim = Atualiza("insert into BTREC", 1, [&] {
        rede_->Aceita(false);
        rede_->Corta();
    });
    EXPECT_EQ(fim, TFimDaAtualizacao::Encerrada);
    EXPECT_NE(Erros().find("não pôde ser reaberta"), std::string::npos) << Erros();
    EXPECT_FALSE(TTelaDeTeste::Contem(tela_->memo1, "Criou a tabela: TNOVA"));
    EXPECT_EQ(Raizes(), 1) << Erros();
    EXPECT_EQ(evidencia_.erros.front().erro.falha, TFalha::Conexao);
    EXPECT_EQ(Desfecho("TREC"), TDesfecho::NaoFeito);
    for (const char* nome : {"TNOVA", "QuerysPosteriores", "Dicionario_tabelas"})
        EXPECT_EQ(std::ranges::count(evidencia_.naoRodaram, nome), 1) << nome;
    EsperaConserto();
}

TEST_F(Reconexao, WithTheLockTakenByAnotherNothingMoreIsTouched) {
    Prepara();
    THBNConnection direta(TAliases(pasta_ / "rede.ini"));
    direta.SetAlias("DIRETA");
    direta.Open();
    std::optional<TTravaDoBanco> dela;
    std::string retrato;
    const auto fim = Atualiza("alter table TALT", 1, [&] {
        rede_->Corta();
        for (int vez = 0; vez < 100 && !dela; ++vez) try {
                dela.emplace(direta);
            } catch (const TOutraAtualizacao&) {  // the server has not seen the end of the others yet
                std::this_thread::sleep_for(20ms);
            }
        retrato = Retrato(direta);
    });
    EXPECT_EQ(fim, TFimDaAtualizacao::Encerrada);
    EXPECT_NE(Erros().find("Outra atualização deste banco de dados está em andamento"), std::string::npos) << Erros();
    EXPECT_EQ(Diferencas(retrato, Retrato(direta)), "");
    dela.reset();
    direta.Close();
    EsperaConserto();
}

TEST_F(Reconexao, ASilentServerIsToldCancelledAtTheLimitAndTheRunGoesOn) {
    for (const char* comando : {"alter table TALT", "insert into BTREC", "commit"}) {
        SCOPED_TRACE(comando);
        Prepara();
        const auto inicio = std::chrono::steady_clock::now();
        const auto fim = Atualiza(
            comando, *comando == 'c' ? 40 : 1, [&] { rede_->Emudece(); }, kCurtos);
        EXPECT_LT(std::chrono::steady_clock::now() - inicio, 40s);
        EXPECT_EQ(fim, TFimDaAtualizacao::Concluida) << Erros();
        EXPECT_TRUE(tela_->Disse("sem resposta do servidor há "));
        EXPECT_NE(Erros().find("o servidor ficou mudo até o limite"), std::string::npos) << Erros();
        EXPECT_TRUE(Reabriu());
        EsperaConserto();
    }
}

TEST_F(Reconexao, ALongStatementOfAWorkingServerIsNotCancelled) {
    Prepara();
    TTelaVigiada tela;
    THBNConnection conexao(TAliases(pasta_ / "rede.ini"));
    conexao.SetAlias("LOJA");
    conexao.Open();
    conexao.ExecuteDirect("create table GRANDE (A integer, B varchar(100))");
    const auto enche = [&](int linhas) {
        const auto inicio = std::chrono::steady_clock::now();
        conexao.ExecuteDirect("execute block as declare i integer = 0; begin while (i < " + std::to_string(linhas) +
                              ") do begin insert into GRANDE values (:i, rand() || 'xxxxxxxxxxxxxxxxxxxxxxxx');"
                              " i = i + 1; end end");
        return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - inicio);
    };
    // The limit is as long as half the statement takes here and now, so that it is passed on any machine, and a busy
    // one has the time to answer.
    const auto limite = std::max<std::chrono::milliseconds>(600ms, enche(200'000));
    const TVigia vigia(conexao, {.aviso = limite / 6, .pergunta = limite / 6, .limite = limite},
                       [&](std::string_view texto) { tela.SemResposta(texto); });
    enche(400'000);
    conexao.ExecuteDirect("create index GRANDE_B on GRANDE (B, A)");
    EXPECT_TRUE(tela.Disse("o servidor trabalha no mesmo comando há "));
    EXPECT_EQ(Linhas(conexao, "select count(*) from GRANDE"), "600000");
}

}  // namespace
}  // namespace wkd
