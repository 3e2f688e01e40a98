#include "Assistente.h"

#include <QApplication>
#include <QIcon>
#include <QTimer>
#include <clocale>

#include "DialogosQt.h"
#include "Eco.h"
#include "EstiloAmetista.h"
#include "FontesDoSistema.h"
#include "Idioma.h"
#include "TextoQt.h"

namespace wkd {

namespace {

/// Chooses where windows are drawn; false when there is no place to.
bool EscolheTela([[maybe_unused]] bool desassistida) {
#if !defined(_WIN32) && !defined(__APPLE__)
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) return true;
    const bool temTela = qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
    if (!desassistida) return temTela;
    // A display that does not answer must not stop a run either.
    qputenv("QT_QPA_PLATFORM", temTela ? "xcb;wayland;offscreen" : "offscreen");
#endif
    return true;
}

/// An unattended run's error stream holds what the run reports, not what Qt misses on a machine without desktop.
void CalaAvisosDoQt() {
    qInstallMessageHandler([](QtMsgType tipo, const QMessageLogContext&, const QString& texto) {
        if (tipo == QtCriticalMsg || tipo == QtFatalMsg) EscreveNosErros(S(texto));
    });
}

void Prepara(QApplication& aplicacao) {
    // Qt takes the user's locale over; numbers and path names of the engine go by "C", in UTF-8.
    std::setlocale(LC_ALL, "C");
    std::setlocale(LC_CTYPE, "C.UTF-8");
    QApplication::setStyle(new TEstiloAmetista);
    QApplication::setApplicationName("AtualizaWKD");
    QApplication::setDesktopFileName("atualizawkd");
    // Reading a picture loads all image plugins: not before the window is there.
    QTimer::singleShot(100, &aplicacao, [] { QApplication::setWindowIcon(QIcon(":/atualizawkd.png")); });
    FalaPortugues(aplicacao);
}

void GravaLog(const TLogDaExecucao& log) {
    try {
        log.Salva();
    } catch (const std::exception& erro) {
        EscreveNosErros(erro.what());
    }
}

}  // namespace

TCodigoDeSaida AbreAssistente(int& argc, char** argv, const TAmbiente& ambiente, TInicio inicio) {
    const bool desassistida = inicio.pacote.has_value();
    if (!EscolheTela(desassistida)) {
        EscreveNosErros("Não há tela para o assistente. Para atualizar sem ela: AtualizaWKD \"ALIAS;\" PACOTE.zip");
        return TCodigoDeSaida::UsoIncorreto;
    }
    if (desassistida) CalaAvisosDoQt();
    std::setlocale(LC_ALL, "");  // QApplication does it, too, but not while the fonts are read
    std::jthread fontes = LeFontesDoSistema();
    QApplication aplicacao(argc, argv);
    if (fontes.joinable()) fontes.join();
    Prepara(aplicacao);

    TLogDaExecucao log(ambiente.pastaPrograma / "AtualizaWKD.log");
    TDialogosQt dialogos;
    TTelaDaJanela tela(log, dialogos, desassistida);
    TPreferencias preferencias;
    try {
        log.Carrega();
        TDataModulo dm(TAliases(LocalizaIni(ambiente.locais)), tela);
        TFMAtualiza janela(dm, {ambiente, log, tela, dialogos, preferencias}, std::move(inicio));
        janela.show();
        QApplication::exec();
        return janela.Codigo();
    } catch (const std::exception& erro) {
        tela.Informacao(erro.what());
        if (desassistida) GravaLog(log);
        return TCodigoDeSaida::SemConexao;
    }
}

}  // namespace wkd
