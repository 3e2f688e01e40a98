#pragma once

#include <QObject>
#include <functional>

class QNetworkAccessManager;
class QUrl;

namespace wkd {

/// HTTP client of the window. Keeps the size that the transfer under way is expected to have.
class TClienteHttp : public QObject {
  public:
    using TRecebido = std::function<void(const QByteArray&)>;

    explicit TClienteHttp(QObject* pai) : QObject(pai) {}

    /// Returns at once; `recebido` is called when all has come, and never when the transfer fails.
    void Busca(const QUrl& url, TRecebido recebido);
    /// In bytes; 0 when nothing is transferred or the server does not tell.
    double TamanhoEsperado() const { return tamanhoEsperado_; }

  private:
    QNetworkAccessManager* rede_ = nullptr;  // made at the first use
    double tamanhoEsperado_ = 0;
};

}  // namespace wkd
