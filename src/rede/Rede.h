#pragma once

#include <QtGlobal>
#include <functional>

class QByteArray;
class QObject;
class QUrl;

namespace wkd {

/// What is told of a transfer, on the caller's thread.
struct TOuvinteDaBusca {
    std::function<void(double)> tamanho;  // in bytes, as the server tells it; 0 behind the transfer
    std::function<void(const QByteArray&)> recebido;
};

}  // namespace wkd

/// Fetches by HTTP; returns at once. What a transfer brings that fails is not told. It ends with its owner.
extern "C" Q_DECL_EXPORT void BuscaNaRede(QObject* dono, const QUrl& url, const wkd::TOuvinteDaBusca& ouvinte);
