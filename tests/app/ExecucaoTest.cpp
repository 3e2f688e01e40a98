#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollBar>
#include <QThread>
#include <QTimer>
#include <atomic>
#include <fstream>
#include <iostream>
#include <thread>

#include <signal.h>
#include <unistd.h>

#include "Arquivos.h"
#include "JanelaApoio.h"
#include "Linhas.h"
#include "process/Interrupcao.h"
#include "widgets/SegundoPlano.h"
#include "window/TelaDaJanela.h"

namespace wkd {
namespace {

/// Serves the window until it is closed or half a minute has passed.
void EsperaFechar(TJanelaDeTeste& janela) {
    QElapsedTimer relogio;
    for (relogio.start(); janela.Janela().isVisible() && relogio.elapsed() < 30'000;) QApplication::processEvents();
}

TEST(ExecucaoTest, UpdatesFromClickToEndAndStaysAlive) {
    TInstalacao instalacao;
    TJanelaDeTeste janela(instalacao, {"LOJA;", {}});
    janela.Mostra();
    janela.C<QLineEdit>("edAtualizacao").setText(QCaminho(instalacao.Pacote()));
    for (int i = 0; i < 3; ++i) janela.C<QPushButton>("btProximo").click();
    ASSERT_EQ(janela.C<QPushButton>("btProximo").text(), "Atualizar");

    int servidas = 0;
    QTimer relogio;
    QObject::connect(&relogio, &QTimer::timeout, [&] {
        ++servidas;
        EXPECT_FALSE(janela.Janela().close()) << "closed during the run";
        for (const char* nome : {"btVoltar", "btProximo", "btSair", "btPlano"})
            EXPECT_FALSE(janela.C<QPushButton>(nome).isEnabled()) << nome;
    });
    relogio.start(10);
    janela.dialogos.aoInformar = [&] { relogio.stop(); };
    janela.dialogos.respostas = {true};
    janela.C<QPushButton>("btProximo").click();

    EXPECT_GT(servidas, 3);
    EXPECT_EQ(janela.dialogos.informacoes, std::vector<std::string>{"Atualização concluída com sucesso"});
    EXPECT_EQ(janela.dialogos.perguntas, std::vector<std::string>{"Deseja visualizar arquivo de log?"});
    EXPECT_EQ(janela.dialogos.abertos.size(), 1u);
    EXPECT_TRUE(janela.C<QPushButton>("btSair").isEnabled());
    EXPECT_FALSE(janela.C<QPushButton>("btVoltar").isEnabled());
    EXPECT_FALSE(janela.C<QPushButton>("btProximo").isEnabled());
    EXPECT_EQ(S(janela.C<QLabel>("lblVeredicto").text()), "Concluída sem erros");
    EXPECT_TRUE(janela.C<QLabel>("lblVeredicto").isVisible());
    for (const char* nome : {"btRelatorio", "btLogDoFim"}) janela.C<QPushButton>(nome).click();
    ASSERT_EQ(janela.dialogos.abertos.size(), 3u);
    EXPECT_TRUE(janela.dialogos.abertos[1].endsWith("AtualizaWKD.relatorio.html"));
    EXPECT_TRUE(QFile::exists(janela.dialogos.abertos[1]));
    EXPECT_TRUE(janela.dialogos.abertos[2].endsWith("AtualizaWKD.log"));
    const QString memo1 = janela.C<QPlainTextEdit>("Memo1").toPlainText();
    EXPECT_TRUE(memo1.contains("Atualizou o arquivo: TCLI_CON"));
    EXPECT_TRUE(memo1.section('\n', -1).startsWith("Tempo de Atualização: ")) << S(memo1.right(200));
    EXPECT_EQ(Linhas(*instalacao.Conexao(), "select versao from sarquivo where nome_arquivo = 'TCLI_CON'"), "4");
    EXPECT_TRUE(janela.Janela().close());
}

/// In a process of its own: a run in the window that gets the signal. Prints what it left, and ends with its code.
[[noreturn]] void InterrompeNaJanela(int sinal) {
    TInterrupcao::AtendeSinais({});
    TInstalacao instalacao;
    TJanelaDeTeste janela(instalacao, {"LOJA;", {}});
    janela.Mostra();
    janela.C<QLineEdit>("edAtualizacao").setText(QCaminho(instalacao.Pacote()));
    for (int i = 0; i < 3; ++i) janela.C<QPushButton>("btProximo").click();
    int vezes = 0, recusadas = 0;
    QTimer relogio;
    QObject::connect(&relogio, &QTimer::timeout, [&] {
        recusadas += janela.Janela().close() ? 0 : 1;
        if (++vezes == 2) kill(getpid(), sinal);
    });
    relogio.start(10);
    janela.dialogos.aoInformar = [&] { relogio.stop(); };
    janela.C<QPushButton>("btProximo").click();
    relogio.stop();
    EsperaFechar(janela);
    std::cerr << "fechar recusado " << (recusadas == vezes && vezes > 1 ? "sempre" : "nem sempre") << ", janela "
              << (janela.Janela().isVisible() ? "aberta" : "fechada") << ", "
              << janela.dialogos.informacoes.size() + janela.dialogos.perguntas.size()
              << " perguntas\nlog: " << LeArquivo(instalacao.Pasta() / "AtualizaWKD.log")
              << "\nrelatório: " << LeArquivo(instalacao.Pasta() / "AtualizaWKD.relatorio.json") << std::endl;
    std::_Exit(static_cast<int>(janela.Janela().Codigo()));
}

TEST(ExecucaoDeathTest, ASignalEndsTheRunInTheWindowWithLogAndReport) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const int sinal : {SIGTERM, SIGINT})
        EXPECT_EXIT(InterrompeNaJanela(sinal), testing::ExitedWithCode(128 + sinal),
                    "fechar recusado sempre, janela fechada, 0 perguntas[^$]*"
                    "log: [^$]*Interrompida: rode de novo[^$]*relatório: [^$]*Interrompida: rode de novo");
}

TEST(ExecucaoTest, AnEarlyEndFreesTheWindowForClosing) {
    TInstalacao instalacao;
    TJanelaDeTeste janela(instalacao, {"LOJA;", {}});
    janela.Mostra();
    janela.C<QLineEdit>("edAtualizacao").setText("/nao/existe.zip");
    janela.C<QPushButton>("btAtualizar").click();
    EXPECT_EQ(janela.dialogos.informacoes, std::vector<std::string>{"Arquivo de atualizção não existe"});
    EXPECT_FALSE(janela.C<QPushButton>("btSair").isEnabled());
    EXPECT_TRUE(janela.C<QLabel>("lblProvidencia").isVisibleTo(&janela.C<QWidget>("status")));
    EXPECT_TRUE(janela.C<QLabel>("lblProvidencia").text().startsWith("Confira o caminho do pacote"));
    EXPECT_TRUE(janela.C<QLabel>("lblProvidencia").text().contains("feche a janela"));
    EXPECT_TRUE(janela.Janela().close());
}

TEST(ExecucaoTest, AfterAnyOtherEarlyEndTheWizardGoesOn) {
    TInstalacao instalacao;
    std::ofstream(instalacao.Pasta() / "estragado.zip") << "no zip";
    TJanelaDeTeste janela(instalacao, {"LOJA;", {}});
    janela.Mostra();
    for (int i = 0; i < 3; ++i) {
        janela.C<QLineEdit>("edAtualizacao").setText(QCaminho(instalacao.Pasta() / "estragado.zip"));
        janela.C<QPushButton>("btProximo").click();
    }
    janela.C<QPushButton>("btProximo").click();
    EXPECT_EQ(janela.dialogos.informacoes.size(), 1u);
    for (const char* nome : {"btVoltar", "btPlano", "btSair"})
        EXPECT_TRUE(janela.C<QPushButton>(nome).isEnabled()) << nome;
    EXPECT_TRUE(janela.C<QLabel>("lblProvidencia").text().startsWith("Peça um pacote completo"));

    for (int i = 0; i < 2; ++i) janela.C<QPushButton>("btVoltar").click();
    janela.C<QLineEdit>("edAtualizacao").setText(QCaminho(instalacao.Pacote()));
    for (int i = 0; i < 3; ++i) janela.C<QPushButton>("btProximo").click();
    EXPECT_EQ(janela.C<QLabel>("lblVeredicto").text(), "Concluída sem erros");
    EXPECT_FALSE(janela.C<QLabel>("lblProvidencia").isVisible());
}

TEST(ExecucaoTest, UnattendedEndsWithItsCodeAndAsksNobody) {
    TInstalacao instalacao;
    struct TCaso {
        const char* alias;
        std::filesystem::path pacote;
        TCodigoDeSaida codigo;
        const char* noLog;
    };
    const TCaso casos[] = {
        {"NENHUM;", instalacao.Pacote(), TCodigoDeSaida::SemConexao, "Não foi possível convetar ao banco"},
        {"LOJA;", "/nao/existe.zip", TCodigoDeSaida::Encerrada, "Arquivo de atualizção não existe"},
        {"loja;nobkp", instalacao.Pacote(), TCodigoDeSaida::Sucesso, ""},
    };
    for (const TCaso& caso : casos) {
        TJanelaDeTeste janela(instalacao, {caso.alias, caso.pacote});
        janela.Mostra();
        EsperaFechar(janela);
        EXPECT_FALSE(janela.Janela().isVisible()) << caso.alias;
        EXPECT_EQ(janela.Janela().Codigo(), caso.codigo) << caso.alias;
        EXPECT_TRUE(janela.dialogos.informacoes.empty() && janela.dialogos.perguntas.empty());
        QFile log(QCaminho(instalacao.Pasta() / "AtualizaWKD.log"));
        ASSERT_TRUE(log.open(QIODevice::ReadOnly));
        EXPECT_TRUE(log.readAll().contains(caso.noLog)) << caso.noLog;
    }
    EXPECT_EQ(Linhas(*instalacao.Conexao(), "select versao from sarquivo where nome_arquivo = 'TCLI_CON'"), "4");
}

/// Longest time that the window left its messages unserved, in milliseconds.
class TMedidorDeParadas {
  public:
    TMedidorDeParadas() : vigia_([this](const std::stop_token& fim) { OlhaAMaquina(fim); }) {
        QObject::connect(&relogio_, &QTimer::timeout, [this] {
            maior_ = std::max(maior_, desde_.restart());
            ++vezes_;
        });
        desde_.start();
        relogio_.start(10);
    }
    qint64 Maior() const { return std::max(maior_, desde_.elapsed()); }
    /// How long, at most, the machine has kept a thread without work waiting meanwhile.
    qint64 DaMaquina() const { return daMaquina_; }
    int Vezes() const { return vezes_; }

  private:
    void OlhaAMaquina(const std::stop_token& fim) {
        while (!fim.stop_requested()) {
            QElapsedTimer dormindo;
            dormindo.start();
            QThread::msleep(10);
            daMaquina_ = std::max<qint64>(daMaquina_, dormindo.elapsed());
        }
    }

    QTimer relogio_;
    QElapsedTimer desde_;
    qint64 maior_ = 0;
    int vezes_ = 0;
    std::atomic<qint64> daMaquina_ = 0;
    std::jthread vigia_;
};

TEST(ExecucaoTest, TheWindowAnswersWhileATableOfManyRowsIsRebuilt) {
    constexpr int kLinhas = 100'000;
    TInstalacao instalacao;
    instalacao.Conexao()->ExecuteDirect("execute block as declare i integer = 0; begin while (i < " +
                                        std::to_string(kLinhas) +
                                        ") do begin insert into TCONTAS_REC (DOCUMENTO, PARCELA, VALOR) "
                                        "values ('N' || :i, 1, :i); i = i + 1; end end");
    const auto contas = [&] { return Linhas(*instalacao.Conexao(), "select count(*), sum(VALOR) from TCONTAS_REC"); };
    const std::string antes = contas();
    TJanelaDeTeste janela(instalacao, {"LOJA;", {}});
    janela.Mostra();
    janela.C<QLineEdit>("edAtualizacao").setText(QCaminho(instalacao.Pacote()));
    for (int i = 0; i < 3; ++i) janela.C<QPushButton>("btProximo").click();

    int maiorAtual = 0;
    bool estimou = false;
    QTimer olha;
    QObject::connect(&olha, &QTimer::timeout, [&] {
        maiorAtual = std::max(maiorAtual, janela.C<QProgressBar>("pbAtual").value());
        const QString texto = janela.C<QLabel>("lblEstimativa").text();
        estimou = estimou || (texto.startsWith("Tabela 12 de 14 | ") && texto.contains(" de 100."));
    });
    olha.start(50);
    const TMedidorDeParadas paradas;
    janela.C<QPushButton>("btProximo").click();
    RecordProperty("maior_parada_ms", static_cast<int>(paradas.Maior()));
    // One statement of this rebuild takes longer on any machine, a busy one makes everybody wait.
    EXPECT_LT(paradas.Maior(), 500 + 10 * paradas.DaMaquina());
    EXPECT_GT(paradas.Vezes(), 50);
    EXPECT_GT(maiorAtual, kLinhas / 2) << "the bar did not move";
    EXPECT_TRUE(estimou);
    EXPECT_EQ(janela.C<QLabel>("lblEstimativa").text(), "") << "nothing is left to estimate";
    EXPECT_EQ(contas(), antes);
    EXPECT_NE(Linhas(*instalacao.Conexao(), "select versao from sarquivo where nome_arquivo = 'TCONTAS_REC'"), "1");
}

TEST(ExecucaoTest, AHundredThousandLinesAndAMillionRowsCostTheRunLittle) {
    TInstalacao instalacao;
    TJanelaDeTeste janela(instalacao);
    janela.Mostra();
    ITela& tela = janela.Tela();
    QElapsedTimer relogio;
    relogio.start();
    qint64 linhas = 0, barras = 0;
    const TMedidorDeParadas paradas;
    EmSegundoPlano([&] {
        for (int i = 1; i <= 100'000; ++i) tela.Memo1("Linha " + std::to_string(i));
        linhas = relogio.restart();
        tela.PbAtual().Define(0, 1'000'000, 1, 0);
        for (int i = 1; i <= 1'000'000; ++i) {
            tela.PbAtual().Posicao(i);
            tela.LblAtual("Copiando registros da tabela TVENDA_ITENS");
            tela.ProcessaMensagens();
        }
        barras = relogio.elapsed();
    });
    RecordProperty("milhao_de_linhas_ms", static_cast<int>(barras));
    EXPECT_LT(linhas, 3'000);
    EXPECT_LT(barras, 5'000);  // a row of the copy itself takes tens of microseconds
    EXPECT_LT(paradas.Maior(), 1'000);
    janela.Tela().Descarrega();
    EXPECT_LT(relogio.elapsed(), 15'000);
    const auto& memo1 = janela.C<QPlainTextEdit>("Memo1");
    EXPECT_EQ(memo1.blockCount(), 100'000);
    EXPECT_EQ(memo1.verticalScrollBar()->value(), memo1.verticalScrollBar()->maximum());
    EXPECT_EQ(janela.C<QProgressBar>("pbAtual").value(), 1'000'000);
}

TEST(ExecucaoTest, ErrorsCanBeSavedAndTheLogIsKeptNewestFirst) {
    TInstalacao instalacao;
    TJanelaDeTeste janela(instalacao);
    janela.Mostra();
    EXPECT_FALSE(janela.C<QPushButton>("SpeedButton2").isEnabled()) << "there is nothing to save";
    janela.Tela().Erro(TErroDaExecucao::NaLista({.mensagem = "Erro na ação"}, ""));
    janela.Tela().Erro(TErroDaExecucao::NaLista({.mensagem = "Outro"}, ""));
    janela.Tela().Erro(TErroDaExecucao::NoLog({.mensagem = "primeira"}, "T1", ""));
    janela.Tela().Erro(TErroDaExecucao::NoLog({.mensagem = "segunda"}, "", "Ação"));
    janela.Tela().Descarrega();
    janela.dialogos.arquivo = QCaminho(instalacao.Pasta() / "erros.log");
    janela.C<QPushButton>("SpeedButton2").click();
    EXPECT_EQ(janela.dialogos.proposto, "AtualizaQueryErro.log");
    QFile erros(janela.dialogos.arquivo);
    ASSERT_TRUE(erros.open(QIODevice::ReadOnly));
    EXPECT_EQ(erros.readAll(), "Erro na ação\r\nOutro\r\n");

    const QString log = janela.C<QPlainTextEdit>("MemoLog").toPlainText();
    EXPECT_TRUE(log.startsWith("\nAção: Ação\nTabela: \n[")) << S(log);
    EXPECT_LT(log.indexOf("segunda"), log.indexOf("primeira"));
}

}  // namespace
}  // namespace wkd
