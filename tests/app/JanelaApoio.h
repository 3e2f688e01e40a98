#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QTextDocument>
#include <QTimer>
#include <cstdlib>
#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "PastaTemporaria.h"
#include "package/Pacote.h"
#include "widgets/Dialogos.h"
#include "window/FMAtualiza.h"

namespace wkd {

/// The application object, made at the first use; without a display unless one is asked for.
inline QApplication& Aplicacao() {
    static int argc = 1;
    static char nome[] = "AtualizaWKD";
    static char* argv[] = {nome, nullptr};
    static QApplication& aplicacao = *[] {
        if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
        auto* nova = new QApplication(argc, argv);
        std::setlocale(LC_ALL, "C");
        std::setlocale(LC_CTYPE, "C.UTF-8");
        return nova;
    }();
    return aplicacao;
}

/// A person who answers what is queued, else No and nothing, and remembers what was asked.
class TDialogosDeTeste : public IDialogos {
  public:
    std::vector<std::string> informacoes, perguntas;
    std::vector<std::string> erros;  // those among the informations that carry the sign of one
    std::vector<QString> abertos;
    std::deque<bool> respostas;
    QString arquivo, proposto, impresso;
    std::function<void()> aoInformar = [] {};

    void Informacao(const QString& texto) override {
        informacoes.push_back(S(texto));
        aoInformar();
    }
    void Erro(const QString& texto) override {
        erros.push_back(S(texto));
        Informacao(texto);
    }
    bool Confirmacao(const QString& texto) override {
        perguntas.push_back(S(texto));
        if (respostas.empty()) return false;
        const bool resposta = respostas.front();
        respostas.pop_front();
        return resposta;
    }
    TAcaoReconcilia Reconcilia(const QString&) override { return TAcaoReconcilia::Pula; }
    QString ArquivoParaAbrir() override { return arquivo; }
    QString BackupParaAbrir() override { return arquivo; }
    QString BancoParaAbrir() override { return arquivo; }
    QString ArquivoParaGravar(const QString& nome, const QStringList&) override {
        proposto = nome;
        return arquivo;
    }
    QString Pasta(const QString&) override { return arquivo; }
    void Abre(const QString& caminho) override { abertos.push_back(caminho); }
    void Imprime(const QString&, const QTextDocument& documento) override { impresso = documento.toPlainText(); }
};

/// The example's database, of an older release, and the package of the newer one, in a folder with a settings file
/// whose alias LOJA opens the one and whose alias QUEBRADO opens nothing.
class TInstalacao {
  public:
    TInstalacao() { Instala(); }
    /// In the temporary folder of this name.
    explicit TInstalacao(const std::string& pasta) : pasta_(pasta) { Instala(); }

    std::filesystem::path Pacote() const { return pasta_ / "pacote.zip"; }
    std::filesystem::path Pasta() const { return pasta_.Caminho(); }
    TAliases Aliases() const { return TAliases(pasta_ / "WKD.ini"); }
    TAmbiente Ambiente() const {
        return {Pasta(), Pasta(), pasta_ / "naocria.wkd", {Pasta(), pasta_ / "opt", pasta_ / "nenhum.ini"}, Pasta()};
    }
    /// A connection of its own to the alias's database.
    std::unique_ptr<THBNConnection> Conexao() const {
        auto conexao = std::make_unique<THBNConnection>(Aliases());
        conexao->SetAlias("LOJA");
        conexao->Open();
        return conexao;
    }

  private:
    void Instala() {
        const std::filesystem::path exemplos = WKD_EXEMPLOS;
        const std::string banco = "'" + (pasta_ / "loja.fdb").string() + "'";
        Roda("echo \"create database " + banco + " page_size 8192 default character set WIN1252;\" | isql-fb -q");
        Roda("gfix -write async " + banco);  // nobody needs it after a power cut
        Roda("isql-fb -q -b -ch UTF8 " + banco + " <'" + (exemplos / "banco.sql").string() + "'");
        std::vector<std::filesystem::path> arquivos;
        for (const auto& item : std::filesystem::directory_iterator(exemplos / "pacote"))
            arquivos.push_back(item.path());
        CompactaZip(arquivos, Pacote());

        TAlias alias;
        alias.nome = "LOJA";
        alias.tipoBanco = "tbInterbase";
        alias.usuario = "SYSDBA";
        alias.senha = "masterkey";
        alias.path = pasta_.Caminho().string() + "/";
        alias.database = "loja.fdb";
        const TAliases aliases(Ambiente().locais.pastaPrograma / "WKD.ini");
        aliases.AdicionaAlias(alias, true);
        aliases.INIGravaString("LOJA", "RELATORIO", alias.path);
        alias.nome = "QUEBRADO";
        alias.database = "nenhum.fdb";
        aliases.AdicionaAlias(alias, false);
    }

    static void Roda(const std::string& comando) {
        if (std::system(comando.c_str()) != 0) throw std::runtime_error(comando);
    }

    TPastaTemporaria pasta_;
};

/// The real window on an installation, driven by control name.
class TJanelaDeTeste {
  public:
    explicit TJanelaDeTeste(const TInstalacao& instalacao, TInicio inicio = {})
        : log_(instalacao.Pasta() / "AtualizaWKD.log"),
          preferencias_(QCaminho(instalacao.Pasta() / "preferencias.ini")),
          tela_(log_, dialogos, inicio.pacote.has_value()),
          daEntrada_((Aplicacao(), instalacao.Aliases()), tela_) {
        // A window that ended the application leaves it ended: no loop of a dialog would wait until it runs once more.
        QTimer::singleShot(0, [] { QCoreApplication::quit(); });
        QCoreApplication::exec();
        log_.Carrega();
        janela_ = std::make_unique<TFMAtualiza>(
            daEntrada_, TMeios{instalacao.Ambiente(), log_, tela_, dialogos, preferencias_}, std::move(inicio));
    }

    /// Shows the window and serves what that starts, until it is drawn and has all its pages.
    void Mostra() {
        janela_->show();
        janela_->activateWindow();
        QElapsedTimer espera;
        espera.start();
        do Serve();
        while (!janela_->findChild<QWidget*>("status") && espera.elapsed() < 30'000);
    }
    void Serve() {
        for (int i = 0; i < 5; ++i) QApplication::processEvents();
    }
    template <class T>
    T& C(const char* nome) {
        T* controle = janela_->findChild<T*>(nome);
        if (!controle) throw std::runtime_error(std::string("no control ") + nome);
        return *controle;
    }
    TFMAtualiza& Janela() { return *janela_; }
    TTelaDaJanela& Tela() { return tela_; }

    TDialogosDeTeste dialogos;

  private:
    TLogDaExecucao log_;
    TPreferencias preferencias_;
    TTelaDaJanela tela_;
    TDataModulo daEntrada_;
    std::unique_ptr<TFMAtualiza> janela_;
};

}  // namespace wkd
