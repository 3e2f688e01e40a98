#include "window/Assistente.h"

#include <QApplication>
#include <QIcon>
#include <QTimer>
#include <clocale>

#include "commands/Comandos.h"
#include "commands/Eco.h"
#include "commands/Preferencias.h"
#include "widgets/Dialogos.h"
#include "widgets/EstiloAmetista.h"

namespace wkd {

namespace {

/// Chooses where windows are drawn; false when there is no place to.
bool EscolheTela([[maybe_unused]] bool desassistida) {
#if !defined(_WIN32) && !defined(__APPLE__)
    const QByteArray pedida = qgetenv("QT_QPA_PLATFORM");
    const bool temTela = qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
    if (!desassistida) return temTela || !pedida.isEmpty();
    // Neither a platform nor a display that does not work here must stop a run.
    const QByteArray primeiras = !pedida.isEmpty() ? pedida : QByteArray(temTela ? "xcb;wayland" : "offscreen");
    qputenv("QT_QPA_PLATFORM", primeiras + ";offscreen;minimal");
#endif
    return true;
}

constexpr const char* kSemTela = "Para atualizar sem ela: AtualizaWKD \"ALIAS;\" PACOTE.zip";

/// Qt would end the program by abort(), with a core dump.
void TelaQueNaoAbre(QtMsgType tipo, const QMessageLogContext&, const QString& texto) {
    if (tipo != QtFatalMsg) return;
    EscreveNosErros("Não foi possível abrir a tela do assistente. " + std::string(kSemTela) + "\n" + S(texto));
    EsperaSaidas();
    std::_Exit(static_cast<int>(TCodigoDeSaida::UsoIncorreto));
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

/// The settings file; without one the person may have it made. Nothing when not.
std::optional<std::filesystem::path> EscolheIni(const TAmbiente& ambiente, IDialogos& dialogos, bool desassistida) {
    try {
        return LocalizaIni(ambiente.locais);
    } catch (const TErroConfiguracao& erro) {
        if (desassistida) throw;
        auto novo = IniParaGravar(ambiente);
        const std::string pergunta = std::string(erro.what()) + "\n\nCriar agora um alias, em " + novo.string() + "?";
        return dialogos.Confirmacao(Q(pergunta)) ? std::optional(std::move(novo)) : std::nullopt;
    }
}

}  // namespace

TCodigoDeSaida AbreAssistente(int& argc, char** argv, const TAmbiente& ambiente, TInicio inicio) {
    const bool desassistida = inicio.pacote.has_value();
    if (!EscolheTela(desassistida)) {
        EscreveNosErros("Não há tela para o assistente. " + std::string(kSemTela));
        return TCodigoDeSaida::UsoIncorreto;
    }
    std::jthread fontes = LeFontesDoSistema();
    const auto avisos = qInstallMessageHandler(TelaQueNaoAbre);
    argc = 1;  // the arguments are ours: Qt would take some of them for its own
    QApplication aplicacao(argc, argv);
    qInstallMessageHandler(avisos);
    if (desassistida) CalaAvisosDoQt();
    Prepara(aplicacao);

    TLogDaExecucao log(ambiente.pastaPrograma / "AtualizaWKD.log");
    TDialogosQt dialogos;
    TTelaDaJanela tela(log, dialogos, desassistida, inicio.silencioso);
    TPreferencias preferencias;
    try {
        tela.CarregaLog();
        if (fontes.joinable()) fontes.join();  // from here on there is text to draw
        const auto ini = EscolheIni(ambiente, dialogos, desassistida);
        if (!ini) return TCodigoDeSaida::SemConexao;
        TDataModulo dm(TAliases(*ini), tela);
        TFMAtualiza janela(dm, {ambiente, log, tela, dialogos, preferencias}, std::move(inicio));
        janela.show();
        QApplication::exec();
        return janela.Codigo();
    } catch (const std::exception& erro) {
        tela.Erro(TErroDaExecucao::NaCaixa(ErroDe(erro)));
        if (desassistida) tela.SalvaLog();
        return TCodigoDeSaida::SemConexao;
    }
}

}  // namespace wkd
