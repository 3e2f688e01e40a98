#include "widgets/SegundoPlano.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QEventLoop>
#include <QKeyEvent>
#include <QScopeGuard>
#include <QThread>
#include <future>
#include <optional>

namespace wkd {

namespace {

/// While it lives, no key and no click reaches the program, but for those that cancel. A window hands the clicks on to
/// its controls, where they are told apart.
class TDescarteDeEntrada : public QObject {
  public:
    explicit TDescarteDeEntrada(QAbstractButton* cancela) : cancela_(cancela) {
        QCoreApplication::instance()->installEventFilter(this);
    }
    /// What the system still holds was typed before the end, too.
    ~TDescarteDeEntrada() override {
        cancela_ = nullptr;
        QCoreApplication::processEvents();
    }

    bool eventFilter(QObject* alvo, QEvent* evento) override {
        switch (evento->type()) {
            case QEvent::KeyPress:
                if (cancela_ && static_cast<QKeyEvent*>(evento)->key() == Qt::Key_Escape) cancela_->click();
                return true;
            case QEvent::KeyRelease:
            case QEvent::ShortcutOverride:
            case QEvent::Shortcut:
            case QEvent::InputMethod:
            case QEvent::ContextMenu:
                return true;
            case QEvent::MouseButtonPress:
            case QEvent::MouseButtonRelease:
            case QEvent::MouseButtonDblClick:
            case QEvent::Wheel:
            case QEvent::TouchBegin:
            case QEvent::TouchEnd:
                return !cancela_ || (alvo != cancela_ && !alvo->isWindowType());
            default:
                return false;
        }
    }

  private:
    QAbstractButton* cancela_;
};

}  // namespace

void EmSegundoPlano(const std::function<void()>& trabalho, TEntrada entrada, QAbstractButton* cancela) {
    std::optional<TDescarteDeEntrada> descarte;
    if (entrada == TEntrada::Descarta) descarte.emplace(cancela);
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
