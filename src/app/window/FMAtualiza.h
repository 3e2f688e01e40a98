#pragma once

#include <QDialog>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>

#include "ServidorDeBackup.h"
#include "commands/LinhaDeComando.h"
#include "commands/Preferencias.h"
#include "context/Contexto.h"
#include "process/Interrupcao.h"
#include "process/Programa.h"
#include "window/Navegacao.h"
#include "window/TelaDaJanela.h"

class QLabel;
class QPushButton;
class QStackedWidget;

namespace wkd {

class TClienteHttp;
class TPaginaAlias;
class TPaginaAtualizacao;
class TPaginaBackup;
class TPaginaOpcoes;
class TPainelOcupado;
class TVigia;
struct TDadosDoAlias;

/// What the program was started with.
struct TInicio {
    std::string primeiro;                         // first argument; empty: none
    std::optional<std::filesystem::path> pacote;  // second argument: run at once and close
    bool comBackup = false;                       // no update without a good backup
    bool silencioso = false;                      // nothing but errors on the console
    TEscolhas escolhas = {};                      // what the page of options is to say
};

/// What the window works with; all of it outlives the window.
struct TMeios {
    TAmbiente ambiente;
    TLogDaExecucao& log;
    TTelaDaJanela& tela;
    IDialogos& dialogos;
    TPreferencias& preferencias;
};

/// What is out of sight when the window opens: the pages behind the first, and what tells of work under way.
struct TSeguintes {
    TPaginaBackup* backup;
    TPaginaAtualizacao* atualizacao;
    TPaginaOpcoes* opcoes;
    TPaginaStatus* status;
    TPainelOcupado* ocupado;
};

/// The wizard window: its pages, the way through them, and the start of the update run.
class TFMAtualiza : public QDialog {
    Q_OBJECT
  public:
    /// Makes the data module that it works with; the entry's stays alive beside it.
    TFMAtualiza(TDataModulo& daEntrada, const TMeios& meios, TInicio inicio);
    ~TFMAtualiza() override;

    /// What the unattended run came to, whatever was asked after its end; else the signal that closed the window.
    TCodigoDeSaida Codigo() const;
    TClienteHttp& Http() { return *http_; }

  protected:
    void showEvent(QShowEvent* evento) override;
    void paintEvent(QPaintEvent* evento) override;
    void closeEvent(QCloseEvent* evento) override;
    /// Escape.
    void reject() override;

  private:
    // Making of the window
    QWidget* Faixa();
    QStackedWidget* Paginas();
    QWidget* Botoes();
    void Liga();
    void Dimensiona();
    void Centraliza();
    /// Made as soon as the window is drawn, or sooner for whoever needs them.
    TSeguintes& Seguintes();
    void FazSeguintes();
    void AcrescentaPagina(QWidget* pagina);
    void LigaSeguintes();
    void MostraErro(TErro erro);

    void FormShow();
    void FormClose();
    void LeArgumentos();
    void Termina();
    void RestauraPreferencias();
    void GravaPreferencias();

    void Espera(const QString& texto, const std::function<void()>& pedido);
    QString Conectando() const;

    // Alias
    void PreencheDados();
    TDadosDoAlias Preenche(const std::string& alias);
    void AbreAliasPedido(const std::string& nome);
    void LiberaUsuarios();
    void ListaAliases();
    void EditaAlias(const std::string& nome);

    // Pages
    void btProximoClick();
    bool DeixaAlias();
    void btVoltarClick();
    void MostraPagina(const TPasso& passo);
    bool PacoteExiste();
    void ReabreConexao();

    // Backup
    void ComAndamento(const std::function<std::string(const TAcompanha&)>& trabalho);
    void btExecutaBackupClick();
    void btRestauraBackupClick();
    void RestauraNaCopia(const std::filesystem::path& arquivo);

    // Run
    void btAtualizarClick();
    void btPlanoClick();
    void btEnsaioClick();
    bool BackupAntes(const std::filesystem::path& pasta, TEvidencia& evidencia);
    TCodigoDeSaida Executa(TFimMostrado& mostrado);
    /// Over the connection, while it is in another thread's hands.
    TVigia Vigia(const std::string& alias);
    void NoBanco(const std::function<void()>& trabalho);
    static void AteOFim(const std::function<void()>& trabalho);
    void Interrompe();
    void Continua();
    TFimMostrado Relata(const TEvidencia& evidencia);
    void Conclui();
    TOpcoes Opcoes();
    void Button1Click();

    void btSairClick();
    void btLogClick();
    void AbrirLog();

    TMeios meios_;
    TInicio inicio_;
    TClienteHttp* http_;
    std::unique_ptr<TDataModulo> dm_;
    TEstado estado_;
    TNavegacao navegacao_;
    std::string aliasAtual_;
    bool mostrada_ = false;
    bool desenhada_ = false;
    std::atomic<bool> cancelado_ = false;
    std::atomic<bool> desistiu_ = false;  // of a connection that is being opened
    bool executando_ = false;             // the connection is in another thread's hands: nothing else may use it
    TCodigoDeSaida codigo_ = TCodigoDeSaida::Sucesso;
    bool executada_ = false;  // the unattended run is over: codigo_ is what it came to

    QLabel* lblTitulo_;
    QLabel* lblNovaVersao_;
    QStackedWidget* ntAtualiza_;
    TPaginaAlias* alias_;
    std::optional<TSeguintes> seguintes_;
    QPushButton* btSair_;
    QPushButton* btProximo_;
    QPushButton* btVoltar_;
    QPushButton* btLog_;

    TOuvinteDeInterrupcao ouvinte_{
        [this](auto) { QMetaObject::invokeMethod(this, &TFMAtualiza::Interrompe, Qt::QueuedConnection); }};
};

}  // namespace wkd
