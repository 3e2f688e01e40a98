#include "SegundoPlano.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QThread>
#include <future>
#include <optional>

namespace wkd {

namespace {

/// While it lives, no key and no click reaches the program.
class TDescarteDeEntrada : public QObject {
  public:
    TDescarteDeEntrada() { QCoreApplication::instance()->installEventFilter(this); }
    /// What the system still holds was typed before the end, too.
    ~TDescarteDeEntrada() override { QCoreApplication::processEvents(); }

    bool eventFilter(QObject*, QEvent* evento) override {
        switch (evento->type()) {
            case QEvent::KeyPress:
            case QEvent::KeyRelease:
            case QEvent::ShortcutOverride:
            case QEvent::Shortcut:
            case QEvent::InputMethod:
            case QEvent::MouseButtonPress:
            case QEvent::MouseButtonRelease:
            case QEvent::MouseButtonDblClick:
            case QEvent::Wheel:
            case QEvent::TouchBegin:
            case QEvent::TouchEnd:
            case QEvent::ContextMenu:
                return true;
            default:
                return false;
        }
    }
};

}  // namespace

void EmSegundoPlano(const std::function<void()>& trabalho, TEntrada entrada) {
    std::optional<TDescarteDeEntrada> descarte;
    if (entrada == TEntrada::Descarta) descarte.emplace();
    QEventLoop laco;
    auto fim = std::async(std::launch::async, [&] {
        const auto avisa =
            qScopeGuard([&] { QMetaObject::invokeMethod(&laco, &QEventLoop::quit, Qt::QueuedConnection); });
        trabalho();
    });
    laco.exec();
    fim.get();
}

void NaThreadDaJanela(const std::function<void()>& funcao) {
    QCoreApplication* janela = QCoreApplication::instance();
    const bool nela = QThread::currentThread() == janela->thread();
    QMetaObject::invokeMethod(janela, funcao, nela ? Qt::DirectConnection : Qt::BlockingQueuedConnection);
}

}  // namespace wkd
