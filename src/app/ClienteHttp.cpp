#include "ClienteHttp.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>

namespace wkd {

namespace {

constexpr int kEsperaMaximaMs = 15'000;

QNetworkRequest Pedido(const QUrl& url) {
    QNetworkRequest pedido(url);
    pedido.setHeader(QNetworkRequest::ContentTypeHeader, "application/x-zip");
    pedido.setRawHeader("Accept", "*/zip");
    pedido.setTransferTimeout(kEsperaMaximaMs);
    return pedido;
}

}  // namespace

void TClienteHttp::Busca(const QUrl& url, TRecebido recebido) {
    if (!rede_) rede_ = new QNetworkAccessManager(this);
    QNetworkReply* resposta = rede_->get(Pedido(url));
    connect(resposta, &QNetworkReply::metaDataChanged, this,
            [this, resposta] { tamanhoEsperado_ = resposta->header(QNetworkRequest::ContentLengthHeader).toDouble(); });
    connect(resposta, &QNetworkReply::finished, this, [this, resposta, recebido = std::move(recebido)] {
        tamanhoEsperado_ = 0;
        if (resposta->error() == QNetworkReply::NoError) recebido(resposta->readAll());
        resposta->deleteLater();
    });
}

}  // namespace wkd
