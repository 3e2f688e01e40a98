#include "SegundoPlano.h"

#include <QCoreApplication>
#include <QThread>
#include <future>

namespace wkd {

void EmSegundoPlano(const std::function<void()>& trabalho, QEventLoop::ProcessEventsFlags servidos) {
    QEventLoop laco;
    auto fim = std::async(std::launch::async, [&] {
        const auto avisa =
            qScopeGuard([&] { QMetaObject::invokeMethod(&laco, &QEventLoop::quit, Qt::QueuedConnection); });
        trabalho();
    });
    laco.exec(servidos);
    fim.get();
}

void NaThreadDaJanela(const std::function<void()>& funcao) {
    QCoreApplication* janela = QCoreApplication::instance();
    const bool nela = QThread::currentThread() == janela->thread();
    QMetaObject::invokeMethod(janela, funcao, nela ? Qt::DirectConnection : Qt::BlockingQueuedConnection);
}

}  // namespace wkd
